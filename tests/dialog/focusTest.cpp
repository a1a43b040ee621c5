#include "tests/dialog/dialogUnderTest.h"

#include <QTest>
#include <QWindow>

/// Where the keys move the focus, and which events they and the mouse send.
class focusTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetSettings(); }
    void keys_data();
    void keys();
    void actsOnReleases();
    void startsOnTheFirstButton();
    void clicks();
    void hidesOnlyWhatComesBack();
    void drags();
};

void focusTest::keys_data()
{
    QTest::addColumn<QString>("shown"); // slots of the buttons
    QTest::addColumn<QString>("from");
    QTest::addColumn<QList<Qt::Key>>("keys");
    QTest::addColumn<QString>("focus");
    QTest::addColumn<QString>("events");
    const QList<Qt::Key> forward{Qt::Key_Tab, Qt::Key_Right, Qt::Key_Down};
    const QList<Qt::Key> backward{Qt::Key_Backtab, Qt::Key_Left, Qt::Key_Up};
    const QList<Qt::Key> first{Qt::Key_Home, Qt::Key_PageUp};
    const QList<Qt::Key> last{Qt::Key_End, Qt::Key_PageDown};
    const QList<Qt::Key> activate{Qt::Key_Return, Qt::Key_Enter};
    const auto row = [](const char *name, const char *shown, const char *from, const QList<Qt::Key> &keys,
                        const char *focus, const char *events = "") {
        QTest::newRow(name) << shown << from << keys << focus << events;
    };
    row("forward", "012", "0", forward, "1");
    row("forward to the Hide button", "012", "2", forward, "hide");
    row("forward stops there", "012", "hide", forward, "hide");
    row("a gap ends forward", "02", "0", forward, "hide");
    row("forward from the last slot", "0123456789", "9", forward, "hide");
    row("backward", "012", "2", backward, "1");
    row("backward stops at slot 0", "012", "0", backward, "0");
    row("backward from the Hide button", "012", "hide", backward, "2");
    row("a gap stops backward", "02", "2", backward, "2");
    row("backward from the Hide button over gaps", "049", "hide", backward, "9");
    row("to the first", "358", "5", first, "3");
    row("to the last", "358", "5", last, "8");
    row("to the last with no buttons", "", "hide", last, "hide");
    row("activate", "03", "3", activate, "3", "clicked:3");
    row("other keys", "012", "1", {Qt::Key_Space, Qt::Key_Escape, Qt::Key_A, Qt::Key_1, Qt::Key_Shift}, "1");
}

void focusTest::keys()
{
    QFETCH(QString, shown);
    QFETCH(QString, from);
    QFETCH(QList<Qt::Key>, keys);
    appearance.m_busyXpos = appearance.m_busyYpos = 0;
    for (const Qt::Key key : keys) {
        dialogUnderTest dialog;
        dialog.run("create:0;a");
        for (const QChar slot : shown)
            dialog.addButton(slot.digitValue(), "b");
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QPushButton *start = from == "hide" ? dialog.hideButton() : dialog.buttons()[from.toInt()];
        start->setFocus();
        dialog.events();
        // To the widget that has the focus, as the toolkit does.
        QTest::keyClick(dialog.focusWidget(), key);
        QTEST(dialog.focus(), "focus");
        QTEST(dialog.events(), "events");
        QVERIFY(dialog.isVisible());
    }
}

void focusTest::actsOnReleases()
{
    dialogUnderTest dialog;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QVERIFY2(!dialog.eventFilter(&dialog, &press), "no button has the focus");
    dialog.run("addButt:0;a");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.events();
    // The key went down elsewhere.
    QTest::keyRelease(dialog.buttons()[0], Qt::Key_Return);
    QVERIFY(dialog.eventFilter(dialog.buttons()[0], &press));
    QVERIFY2(dialog.eventFilter(&dialog, &press), "the dialog's key is its focused button's");
    QCOMPARE(dialog.events(), "");
    QTest::keyRelease(dialog.buttons()[0], Qt::Key_Return);
    QCOMPARE(dialog.events(), "clicked:0");
}

void focusTest::startsOnTheFirstButton()
{
    appearance.m_busyXpos = appearance.m_busyYpos = 0;
    dialogUnderTest dialog;
    dialog.run("create:0;a addButt:5;b addButt:2;c");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focus(), "2");
    dialog.run("delButt:2");
    QCOMPARE(dialog.focus(), "5");
    // Showing it is another matter: slot 0 has the focus then.
    dialog.run("addButt:0;d");
    dialog.buttons()[5]->setFocus();
    dialog.hide();
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focus(), "0");
}

void focusTest::clicks()
{
    appearance.m_busyXpos = appearance.m_busyYpos = 0;
    dialogUnderTest dialog;
    dialog.run("addButt:0;a addButt:3;b delButt:3 addButt:3;c addButt:3;d");
    dialog.events();
    QTest::mouseClick(dialog.buttons()[3], Qt::LeftButton);
    QCOMPARE(dialog.events(), "clicked:3");
    // By mouse or by key, the Hide button only hides.
    QTest::mouseClick(dialog.hideButton(), Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.hideButton()->setFocus();
    QTest::keyClick(dialog.hideButton(), Qt::Key_Return);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.events(), "");
}

void focusTest::hidesOnlyWhatComesBack()
{
    dialogUnderTest dialog;
    dialog.run("create:0;a");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    QVERIFY2(dialog.isVisible(), "the Hide button is not shown");
}

void focusTest::drags()
{
    dialogUnderTest dialog;
    dialog.run("create:0;a");
    const QPoint home = dialog.pos();
    QTest::mousePress(&dialog, Qt::RightButton, {}, QPoint(10, 10));
    QTest::mouseMove(&dialog, QPoint(60, 30));
    QCOMPARE(dialog.pos(), home + QPoint(50, 20));
    // The point that was grabbed is still under the pointer.
    QTest::mouseMove(&dialog, QPoint(1, 1));
    QCOMPARE(dialog.pos(), home + QPoint(41, 11));
    QTest::mouseRelease(&dialog, Qt::RightButton);
}

QTEST_MAIN(focusTest)
#include "focusTest.moc"
