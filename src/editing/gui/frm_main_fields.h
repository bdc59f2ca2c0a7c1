#pragma once

#include <QObject>

class QEvent;
class QKeyEvent;
class QLineEdit;
class frm_Main;

namespace fleetwright {
class RuntimeError;
struct EffectFields;
} // namespace fleetwright

// The main form's editor fields that need more than a value: the effect boxes with their context menu and
// update, the wing span chain, the exit rows, the number key filters, the focus rules that send the focus
// back to the grid while no row is open, and the parking type pick-list and parking code keys. It hangs on
// the form as its child and works through the form's controls and state.
class FieldsController : public QObject
{
    Q_OBJECT

public:
    explicit FieldsController(frm_Main &form);

    // True when lstParking lost the focus to cmdDropDown itself, so that the button's click leaves the list
    // closed instead of opening it again.
    bool ParkingListJustClosed = false;

public slots:
    void EffectDefault();
    void EffectDisable();
    void EffectSelect();
    void cmd_Effect_Update_Click();
    void cmdDropDown_Click();
    void lstParking_Click();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectWingSpanChain();
    void connectExitRows();
    void txt_effects_GotFocus(int index);
    void txt_effects_MouseDown(int index, const QPoint &position);
    bool numberKeyPress(QLineEdit *box, QKeyEvent *event, bool signedField);
    bool parkingCodesKeyPress(QKeyEvent *event);
    bool focusReturns(QObject *watched) const;
    fleetwright::EffectFields effectFields() const;
    void showEffectFields(const fleetwright::EffectFields &fields);
    void showFault(const fleetwright::RuntimeError &error, const char16_t *procedure);

    frm_Main &m_form;
    // True while code selects entries of lstParking, which is no click of the user's.
    bool m_fillingParkingList = false;
};
