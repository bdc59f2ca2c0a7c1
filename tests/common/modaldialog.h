#pragma once

#include <functional>

#include <QApplication>
#include <QPointer>
#include <QTimer>

#include <gtest/gtest.h>

namespace fleetwright::test {

// Hands each modal dialog of type T that opens while it lives to handle, as a user would answer it. One that
// handle leaves open is closed after guardMs and fails the test, so a broken build does not hang the run.
template<typename T> class ModalDialogs
{
public:
    explicit ModalDialogs(std::function<void(T &)> handle, int guardMs = 10000)
    {
        QObject::connect(&m_poll, &QTimer::timeout, [this, handle = std::move(handle), guardMs] {
            auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget());
            if (dialog == nullptr || dialog == std::exchange(m_handled, dialog))
                return;
            ++opened;
            QTimer::singleShot(guardMs, &m_poll, [open = QPointer<T>(dialog)] {
                if (open && open->isVisible()) {
                    ADD_FAILURE() << "a modal dialog was left open";
                    open->close();
                }
            });
            handle(*dialog);
        });
        m_poll.start(10);
    }

    int opened = 0;

private:
    QTimer m_poll;
    QPointer<T> m_handled;
};

} // namespace fleetwright::test
