// Resizable forms: controls and fonts scale with the form from their first values.
#include "startupfixture.h"
#include "support/formresizer.h"

TEST(FormResizer, PlacesControlsOfAFormWithoutLayouts)
{
    QWidget form;
    form.setFixedSize(400, 300);
    auto *label = new QLabel(QStringLiteral("Label"), &form);
    label->setGeometry(30, 20, 100, 20);
    label->setFont(QFont(label->font().family(), 12));
    auto *combo = new QComboBox(&form);
    combo->setGeometry(10, 50, 120, 24);
    auto *list = new QListWidget(&form);
    list->setGeometry(10, 80, 120, 60);
    auto *hidden = new QLineEdit(&form); // off to the left, as controls of a page that is not showing stand
    hidden->setGeometry(30 - 5000, 100, 80, 20);
    FormResizer resizer;
    resizer.ResizeForm(&form);
    form.setFixedSize(800, 450);
    resizer.ResizeForm(&form);
    EXPECT_EQ(label->geometry(), QRect(60, 30, 200, 30));
    EXPECT_EQ(label->font().pointSize(), 24);
    EXPECT_EQ(combo->geometry(), QRect(20, 75, 240, 24)) << "a combo box keeps its height";
    EXPECT_EQ(list->geometry(), QRect(20, 120, 240, 90));
    EXPECT_TRUE(list->font().family() == QStringLiteral("Courier New") && list->font().bold());
    EXPECT_EQ(hidden->geometry(), QRect(60 - 5000, 150, 160, 30)) << "moves with the form and stays off to the left";
}
