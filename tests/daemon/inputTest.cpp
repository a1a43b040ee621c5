#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QTest>

/// Real keys and clicks on the dialog, in both modes, with and without a window manager.
class inputTest : public QObject
{
    Q_OBJECT

private slots:
    void keysAndClicks_data() { addScreens(); }
    void keysAndClicks();
    void takesTheKeyboardFromAnotherWindow_data() { addScreens(); }
    void takesTheKeyboardFromAnotherWindow();
    void hidesAndComesBack_data() { addScreens(); }
    void hidesAndComesBack();
    void isDragged_data() { addScreens(); }
    void isDragged();
    void staysOnCloseRequests();

private:
    static void addScreens();
    virtualScreen &screen();
    /// The dialog's place; none when it does not come, or has not the keyboard.
    QRect focusedDialog() { return screen().waitForFocus("unknown").area; }

    virtualScreen m_bare;
    virtualScreen m_managed{virtualScreen::withOpenbox};
};

void inputTest::addScreens()
{
    QTest::addColumn<bool>("managed");
    QTest::addColumn<QByteArray>("mode");
    for (const char *mode : {"windowModal=on", "windowModal=off"}) {
        QTest::addRow("%s", mode) << false << QByteArray(mode);
        QTest::addRow("%s, window manager", mode) << true << QByteArray(mode);
    }
}

virtualScreen &inputTest::screen()
{
    QFETCH(bool, managed);
    return managed ? m_managed : m_bare;
}

void inputTest::keysAndClicks()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode);
    events->send("<progress>create:0;x</progress><progress>addButt:0;Stop</progress>"
                 "<progress>addButt:1;Pause</progress><progress>addButt:2;Skip</progress>");
    const QRect dialog = focusedDialog();
    QCOMPARE(dialog.topLeft(), QPoint(152, (480 - dialog.height()) / 2));

    const auto clickedAfter = [&](std::initializer_list<const char *> keys) {
        for (const char *key : keys)
            screen().key(key);
        events->progress("activate");
        const QString all = events->eventsUntil("isActivated");
        focusedDialog();
        return all.mid(all.indexOf("clicked"));
    };
    QCOMPARE(clickedAfter({"Return"}), "clicked:0 isActivated");
    // In the non-modal mode a fresh copy has the focus on the first button again.
    QCOMPARE(clickedAfter({"Tab", "KP_Enter", "Right", "Return", "Home", "Return"}),
             "clicked:1 clicked:2 clicked:0 isActivated");
    QCOMPARE(clickedAfter({"Home", "space", "x", "Escape", "alt+s"}), "isActivated");

    // Two buttons in the first row, the third below the first.
    const QPoint row = dialog.bottomLeft() + QPoint(84, -48);
    screen().click(row);
    screen().click(row + QPoint(168, 0));
    screen().click(row + QPoint(0, (dialog.height() - 16) / 12));
    screen().click(row - QPoint(0, 100)); // no button
    QCOMPARE(clickedAfter({}), "clicked:0 clicked:1 clicked:2 isActivated");

    events->progress("delButt:0");
    QCOMPARE(clickedAfter({}), "isActivated");
    screen().click(row); // is button 1 now
    QCOMPARE(clickedAfter({"Home", "Return"}), "clicked:1 clicked:1 isActivated");
}

void inputTest::takesTheKeyboardFromAnotherWindow()
{
    QFETCH(QByteArray, mode);
    daemonProcess other(screen());
    const auto asker = other.openCommands();
    asker->send("<msgbox>1[#]Other[#]x[#]1024</msgbox>");
    const QRect box = screen().waitForFocus("Other").area;

    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode);
    events->progress("addButt:0;Stop");
    QVERIFY(focusedDialog().isValid());
    screen().key("Return");
    QVERIFY(events->hears("clicked:0"));

    // It is hidden, the other has the keyboard again, and it comes back to the front.
    events->progress("messageStart");
    QTRY_VERIFY_WITH_TIMEOUT(!screen().shows("unknown"), patienceMs);
    screen().click(box.center() - QPoint(0, 25));
    events->progress("messageStop");
    QVERIFY(focusedDialog().isValid());
    screen().key("Return");
    QVERIFY(events->hears("clicked:0"));
    QCOMPARE(asker->pending(), QByteArray());
}

void inputTest::hidesAndComesBack()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode + ";busyIndicator=10|500|40|50|empty");
    const QPoint busy(30, 520);
    screen().click(busy); // is not there yet
    events->progress("create:0;x");
    QVERIFY(focusedDialog().isValid());
    const auto isShown = [&] { return screen().shows("unknown"); };

    screen().click(busy);
    QTRY_VERIFY_WITH_TIMEOUT(!isShown(), patienceMs);
    screen().click(busy);
    QVERIFY(focusedDialog().isValid());

    // Behind the buttons, Tab leads to the Hide button.
    events->progress("addButt:0;Stop");
    QVERIFY(events->isServed());
    QVERIFY(focusedDialog().isValid());
    screen().key("Tab");
    screen().key("Return");
    QTRY_VERIFY_WITH_TIMEOUT(!isShown(), patienceMs);
    events->progress("activate");
    // At the right end of the row above the buttons.
    screen().click(focusedDialog().bottomRight() - QPoint(40, 80));
    QTRY_VERIFY_WITH_TIMEOUT(!isShown(), patienceMs);

    events->progress("delButt:0");
    events->progress("remove:0");
    QVERIFY(events->hears("isHidden"));
    screen().click(busy); // is gone, and nothing is active
    QVERIFY(events->isServed());
    QVERIFY(!isShown());
    QVERIFY(!screen().shows("progressd"));
}

void inputTest::isDragged()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode);
    events->progress("addButt:0;Stop");
    const QRect dialog = focusedDialog();
    QVERIFY(dialog.isValid());
    const auto area = [&] { return screen().waitForWindow("unknown").area; };
    const QPoint grip = dialog.topLeft() + QPoint(10, 10);
    const QPoint way(50, 20);
    screen().drag(grip, grip + way);
    QTRY_COMPARE_WITH_TIMEOUT(area(), dialog.translated(way), patienceMs);
    // A button is no grip.
    const QPoint button = area().bottomLeft() + QPoint(60, -48);
    screen().drag(button, button + QPoint(20, 0));
    QVERIFY(events->hears("clicked:0"));
    QCOMPARE(area(), dialog.translated(way));
}

void inputTest::staysOnCloseRequests()
{
    daemonProcess daemon(m_managed);
    const auto events = daemon.openEvents("windowModal=off");
    events->progress("create:0;x");
    QVERIFY(m_managed.waitForFocus("unknown").id);
    m_managed.key("alt+F4");
    QTRY_VERIFY_WITH_TIMEOUT(!m_managed.shows("unknown"), patienceMs);
    events->progress("update:0;50");
    QVERIFY(events->hears("totalProgress=50|-1"));
    events->progress("activate");
    QVERIFY(m_managed.waitForWindow("unknown").id);
}

QTEST_GUILESS_MAIN(inputTest)
#include "inputTest.moc"
