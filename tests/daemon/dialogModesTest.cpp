#include "tests/support/daemonLog.h"
#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QRegularExpression>
#include <QTest>

/// The dialog that stays, and the one that is replaced by a copy; and the runs that it learns.
class dialogModesTest : public QObject
{
    Q_OBJECT

private slots:
    void modalDialogStays();
    void nonModalDialogIsReplaced();
    void changesModeWhileShown();
    void survivesManyReplacementsBetweenMessages();
    void marksTheFocusWhenShownAgain();
    void movesWithTheOffset();
    void learnsRuns_data();
    void learnsRuns();
    void tellsWhatRemains();

private:
    bool bypassesTheManager(const virtualScreen::window &window) const;

    virtualScreen m_screen;
};

bool dialogModesTest::bypassesTheManager(const virtualScreen::window &window) const
{
    return m_screen.run("xwininfo", {"-id", QString::number(window.id)})
        .contains("Override Redirect State: yes");
}

void dialogModesTest::modalDialogStays()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    events->progress("create:0;x");
    const auto dialog = m_screen.waitForWindow("unknown");
    QVERIFY(bypassesTheManager(dialog));
    for (const char *command : {"activate", "messageStart", "messageStop", "remove:0", "create:0;x"})
        events->progress(command);
    QVERIFY(events->hears("isHidden"));
    QVERIFY(events->isServed());
    QCOMPARE(m_screen.waitForWindow("unknown").id, dialog.id);
}

void dialogModesTest::nonModalDialogIsReplaced()
{
    daemonProcess daemon(m_screen);
    const daemonLog log;
    const auto events = daemon.openEvents("windowModal=off");
    events->send("<progress>create:0;x</progress><progress>addButt:0;y</progress>");
    QVERIFY(events->hears("isShown"));
    auto dialog = m_screen.waitForWindow("unknown");
    QVERIFY(!bypassesTheManager(dialog));
    QVERIFY(log.contains(": ---- queueing dialog for delete result="));
    const auto isAnother = [&] { return m_screen.waitForWindow("unknown").id != dialog.id; };
    events->progress("activate");
    QTRY_VERIFY_WITH_TIMEOUT(isAnother(), patienceMs);
    dialog = m_screen.waitForWindow("unknown");
    events->progress("messageStart");
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows("unknown"), patienceMs);
    events->progress("messageStop");
    QVERIFY(isAnother());
    m_screen.click(dialog.area.bottomLeft() + QPoint(84, -48));
    QVERIFY(events->hears("clicked:0"));
}

void dialogModesTest::changesModeWhileShown()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    events->progress("create:0;x");
    const auto modal = m_screen.waitForWindow("unknown");
    events->configure("windowModal=off;windowTitle=Copy");
    QVERIFY(events->isServed());
    const auto copy = m_screen.waitForWindow("Copy");
    QVERIFY(copy.id != modal.id && !bypassesTheManager(copy));
    QVERIFY(!m_screen.shows("unknown"));
    events->configure("windowModal=on;windowTitle=Never seen");
    QVERIFY(events->isServed());
    QCOMPARE(m_screen.waitForWindow("Copy").id, copy.id);
}

void dialogModesTest::survivesManyReplacementsBetweenMessages()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents("windowModal=off;busyIndicator=0|0|40|40|empty");
    events->progress("create:0;x");
    QVERIFY(m_screen.waitForWindow("unknown").id);
    // Each second click replaces the dialog: more than the queue for deletion holds.
    m_screen.xdotool("mousemove 20 20 click --repeat 90 --delay 15 1");
    QTRY_COMPARE_WITH_TIMEOUT(m_screen.windows("unknown").size(), 1, patienceMs);
    QVERIFY(events->isServed());
    QVERIFY(m_screen.waitForWindow("unknown").id);
    events->progress("remove:0");
    QVERIFY(events->hears("isHidden"));
}

void dialogModesTest::marksTheFocusWhenShownAgain()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents("windowControls=#000000|#000000|#000000|#ff00ff");
    const auto isMarked = [this] {
        const QRect area = m_screen.waitForWindow("unknown").area;
        const QImage picture = m_screen.picture();
        int marked = 0;
        for (int y = area.top(); y <= area.bottom(); ++y)
            marked += picture.pixelColor(area.left() + 84, y) == QColor(0xff, 0, 0xff);
        return marked > 0;
    };
    events->send("<progress>create:0;x</progress><progress>addButt:0;y</progress>");
    QTRY_VERIFY_WITH_TIMEOUT(isMarked(), patienceMs);
    // The display has no time to take the keyboard away.
    events->send("<progress>delButt:0</progress><progress>remove:0</progress>"
                 "<progress>create:0;x</progress><progress>addButt:0;y</progress>");
    QVERIFY(events->hears("isHidden"));
    QTRY_VERIFY_WITH_TIMEOUT(isMarked(), patienceMs);
}

void dialogModesTest::movesWithTheOffset()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents("screenGeometry=800,600");
    events->progress("create:0;x");
    const QRect area = m_screen.waitForWindow("unknown").area;
    QCOMPARE(area.center().x(), 399);
    events->configure("paintOffset=5|-7");
    QTRY_COMPARE_WITH_TIMEOUT(m_screen.waitForWindow("unknown").area, area.translated(5, -7), patienceMs);
    // A hidden one stays where it is.
    events->progress("messageStart");
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows("unknown"), patienceMs);
    events->configure("paintOffset=50|50");
    QVERIFY(events->isServed());
    QCOMPARE(m_screen.waitForWindow("unknown").area, area.translated(5, -7));
}

void dialogModesTest::learnsRuns_data()
{
    QTest::addColumn<bool>("isLearned");
    QTest::newRow("undisturbed") << true;
    QTest::newRow("button by mouse") << true;
    QTest::newRow("button by key") << false;
    QTest::newRow("hidden by the client") << false;
    QTest::newRow("box answered") << false;
    QTest::newRow("ends under a box") << false;
    QTest::newRow("copied") << true;
}

void dialogModesTest::learnsRuns()
{
    const QByteArray interruption = QTest::currentDataTag();
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    commands->send("<progress>create:0;x</progress><progress>addButt:0;y</progress>");
    const auto dialog = m_screen.waitForFocus("unknown");
    QVERIFY(dialog.id);
    if (interruption == "hidden by the client") {
        commands->progress("messageStart");
        commands->progress("messageStop");
    } else if (interruption == "copied") {
        commands->configure("windowModal=off");
        QVERIFY(events->isServed());
    } else if (interruption.startsWith("button")) {
        if (interruption == "button by key")
            m_screen.key("Return");
        else
            m_screen.click(dialog.area.bottomLeft() + QPoint(84, -48));
        QVERIFY(events->hears("clicked:0"));
    } else if (interruption.contains("box")) {
        commands->send("<msgbox>1[#]Copy[#]x[#]1280</msgbox>");
        QVERIFY(m_screen.waitForFocus("Copy").id);
        if (interruption == "box answered") {
            m_screen.key("Return");
            QCOMPARE(commands->answer(), qint64{1024});
        }
    }
    // A run of less than a second would not be learned anyway.
    QTest::qWait(1100);
    commands->send(
        "<progress>update:0;90</progress><progress>delButt:0</progress><progress>remove:0</progress>");
    QVERIFY(events->hears("isHidden"));
    commands->send("<exit/>");
    QCOMPARE(daemon.waitForEnd(), 0);
    QVERIFY(daemon.statistics().startsWith("fileversion=2\n"));
    QTEST(daemon.statistics().count('\n') == 2, "isLearned");
}

void dialogModesTest::tellsWhatRemains()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    static const QRegularExpression estimate("totalProgress=\\d+\\|\\d");
    // The very first bar is a change to 0 percent, which no later run begins with.
    events->send("<progress>create:0;x</progress><progress>remove:0</progress>");
    QVERIFY(events->hears("isHidden"));
    for (const bool isKnown : {false, true}) {
        events->progress("create:0;x");
        for (int percent = 20; percent <= 80; percent += 20) {
            QTest::qWait(1000);
            events->progress("update:0;" + QByteArray::number(percent));
        }
        QTest::qWait(1000);
        events->progress("remove:0");
        QCOMPARE(events->eventsUntil("isHidden").contains(estimate), isKnown);
    }
}

QTEST_GUILESS_MAIN(dialogModesTest)
#include "dialogModesTest.moc"
