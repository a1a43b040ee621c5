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
    virtualScreen::window focusedDialog();

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

virtualScreen::window inputTest::focusedDialog()
{
    const auto dialog = screen().waitForWindow("unknown");
    return screen().waitForFocus(dialog) ? dialog : virtualScreen::window{};
}

void inputTest::keysAndClicks()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode);
    const auto commands = daemon.openCommands();
    commands->send("<progress>create:0;x</progress><progress>addButt:0;Stop</progress>"
                   "<progress>addButt:1;Pause</progress><progress>addButt:2;Skip</progress>");
    const auto dialog = focusedDialog();
    QVERIFY(dialog.id);
    QCOMPARE(dialog.area.topLeft(), QPoint(152, (480 - dialog.area.height()) / 2));

    const auto clickedAfter = [&](std::initializer_list<const char *> keys) {
        for (const char *key : keys)
            screen().key(key);
        commands->progress("activate");
        const QString all = events->eventsUntil("isActivated");
        focusedDialog();
        return all.mid(all.indexOf("clicked"));
    };
    QCOMPARE(clickedAfter({"Return"}), "clicked:0 isActivated");
    // In the non-modal mode a fresh copy has the focus on the first button again.
    QCOMPARE(clickedAfter({"Tab", "KP_Enter", "Right", "Return"}), "clicked:1 clicked:2 isActivated");
    QCOMPARE(clickedAfter({"End", "Return", "shift+Tab", "Return", "Home", "Return"}),
             "clicked:2 clicked:1 clicked:0 isActivated");
    QCOMPARE(clickedAfter({"Home", "space", "x", "Escape", "alt+s"}), "isActivated");

    // Two buttons in the first row, the third below the first.
    const QPoint row = dialog.area.bottomLeft() + QPoint(84, -48);
    screen().click(row);
    screen().click(row + QPoint(168, 0));
    screen().click(row + QPoint(0, (dialog.area.height() - 16) / 12));
    screen().click(row - QPoint(0, 100)); // no button
    QCOMPARE(clickedAfter({}), "clicked:0 clicked:1 clicked:2 isActivated");

    commands->progress("delButt:0");
    commands->progress("addButt:1;Again");
    commands->progress("addButt:1;And again");
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
    QVERIFY(screen().waitForFocus(screen().waitForWindow("Other")));

    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode);
    const auto commands = daemon.openCommands();
    commands->send("<progress>addButt:0;Stop</progress>");
    QVERIFY(focusedDialog().id);
    screen().key("Return");
    QVERIFY(events->eventsUntil("clicked:0").endsWith("clicked:0"));

    // It is hidden, the other has the keyboard again, and it comes back to the front.
    commands->progress("messageStart");
    QTRY_VERIFY_WITH_TIMEOUT(!screen().shows("unknown"), patienceMs);
    screen().click(screen().waitForWindow("Other").area.center() - QPoint(0, 25));
    commands->progress("messageStop");
    QVERIFY(focusedDialog().id);
    screen().key("Return");
    QVERIFY(events->eventsUntil("clicked:0").endsWith("clicked:0"));
    QCOMPARE(asker->pending(), QByteArray());
}

void inputTest::hidesAndComesBack()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(mode + ";busyIndicator=10|500|40|50|empty");
    const auto commands = daemon.openCommands();
    const QPoint busy(30, 520);
    screen().click(busy); // is not there yet
    commands->progress("create:0;x");
    QVERIFY(focusedDialog().id);
    const auto isShown = [&] { return screen().shows("unknown"); };

    screen().click(busy);
    QTRY_VERIFY_WITH_TIMEOUT(!isShown(), patienceMs);
    screen().click(busy);
    QVERIFY(focusedDialog().id);

    // Without buttons, Tab leads from nowhere to nowhere; with one, to the Hide button.
    commands->progress("addButt:0;Stop");
    QVERIFY(events->isServed());
    QVERIFY(focusedDialog().id);
    screen().key("Tab");
    screen().key("Return");
    QTRY_VERIFY_WITH_TIMEOUT(!isShown(), patienceMs);
    commands->progress("activate");
    events->eventsUntil("isActivated");
    const auto dialog = focusedDialog();
    QVERIFY(dialog.id);
    // At the right end of the row above the buttons.
    screen().click(dialog.area.bottomRight() - QPoint(40, 80));
    QTRY_VERIFY_WITH_TIMEOUT(!isShown(), patienceMs);

    commands->progress("activate");
    events->eventsUntil("isActivated");
    QVERIFY(focusedDialog().id);
    commands->progress("delButt:0");
    commands->progress("remove:0");
    QCOMPARE(events->eventsUntil("isHidden"), "isHidden");
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
    const auto commands = daemon.openCommands();
    commands->progress("addButt:0;Stop");
    const auto dialog = focusedDialog();
    QVERIFY(dialog.id);
    const QPoint grip = dialog.area.topLeft() + QPoint(10, 10);
    const QPoint way(50, 20);
    screen().drag(grip, grip + way);
    QTRY_COMPARE_WITH_TIMEOUT(screen().waitForWindow("unknown").area, dialog.area.translated(way),
                              patienceMs);
    screen().drag(grip + way, grip - way);
    QTRY_COMPARE_WITH_TIMEOUT(screen().waitForWindow("unknown").area, dialog.area.translated(-way),
                              patienceMs);
    // A button is no grip.
    const QPoint button = dialog.area.translated(-way).bottomLeft() + QPoint(60, -48);
    screen().drag(button, button + QPoint(20, 0));
    QVERIFY(events->eventsUntil("clicked:0").endsWith("clicked:0"));
    QCOMPARE(screen().waitForWindow("unknown").area, dialog.area.translated(-way));
}

void inputTest::staysOnCloseRequests()
{
    daemonProcess daemon(m_managed);
    const auto events = daemon.openEvents("windowModal=off");
    const auto commands = daemon.openCommands();
    commands->progress("create:0;x");
    const auto dialog = m_managed.waitForWindow("unknown");
    QVERIFY(m_managed.waitForFocus(dialog));
    m_managed.key("alt+F4");
    QTRY_VERIFY_WITH_TIMEOUT(!m_managed.shows("unknown"), patienceMs);
    commands->progress("update:0;50");
    QVERIFY(events->eventsUntil("totalProgress=50|-1").endsWith("totalProgress=50|-1"));
    commands->progress("activate");
    QVERIFY(m_managed.waitForWindow("unknown").id);
}

QTEST_GUILESS_MAIN(inputTest)
#include "inputTest.moc"
