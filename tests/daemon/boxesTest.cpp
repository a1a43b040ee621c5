#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QTest>

/// Boxes as a user answers them, with and without a window manager.
class boxesTest : public QObject
{
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void areClosedAsByEscape();
    void savesTheAssertionOnTheClipboard();
    void areAnsweredInAnyOrder();
    void areAnsweredOneAfterTheOther();
    void areAnsweredToTheClientThatAsked();
    void keepInputFromTheDialog_data() { addScreens(); }
    void keepInputFromTheDialog();
    void areNeverHiddenBehindTheDialog_data() { addScreens(); }
    void areNeverHiddenBehindTheDialog();
    void doNotKeepTheDaemon();
    void outliveTheirAsker();
    void areRefusedWhenThereAreTooMany();

private:
    static void addScreens();
    virtualScreen &screen();

    virtualScreen m_bare;
    virtualScreen m_managed{virtualScreen::withOpenbox};
};

namespace
{

const QString assertionTitle("Zerbak Quillet Assertion");
const QByteArray twoBoxes("<msgbox>1[#]First[#]x[#]1024</msgbox><msgbox>1[#]Second[#]x[#]2097152</msgbox>");

/// Makes the dialog magenta, so that a picture of the screen tells where it is seen.
const QByteArray magenta("windowStyle=#0000ff|#ffffff|#0000ff|#ffffff|#ff00ff|#ff00ff;"
                         "windowControls=#ff00ff|#ff00ff|#ff00ff|#ff00ff;busyIndicator=0|0|40|40|empty;");

int magentaPixels(const QImage &picture, QRect area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor colour = picture.pixelColor(x, y);
            count += colour.red() > 200 && colour.green() < 60 && colour.blue() > 200;
        }
    }
    return count;
}

/// Where a single button, or the last one of a row, is in a box.
QPoint lastButton(QRect box)
{
    return box.bottomRight() - QPoint(50, 24);
}

} // namespace

void boxesTest::addScreens()
{
    QTest::addColumn<bool>("managed");
    QTest::addColumn<QByteArray>("mode");
    for (const char *mode : {"windowModal=on", "windowModal=off"}) {
        QTest::addRow("%s", mode) << false << QByteArray(mode);
        QTest::addRow("%s, window manager", mode) << true << QByteArray(mode);
    }
}

virtualScreen &boxesTest::screen()
{
    QFETCH(bool, managed);
    return managed ? m_managed : m_bare;
}

void boxesTest::answers_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<qint64>("code");

    const QByteArray assertion("<assert>if (a < b) x = <b>c</b>;</assert>");
    QTest::newRow("assertion, Escape is Abort") << assertion << assertionTitle << "Escape" << qint64{0x40000};
    QTest::newRow("assertion, Yes to All") << assertion << assertionTitle << "alt+a" << qint64{0x8000};
    QTest::newRow("no title") << QByteArray("<msgbox>1[#][#]x[#]1280</msgbox>") << " "
                              << "Return" << qint64{1024};
    const auto box = [](const char *name, const char *fields, const char *keys, qint64 code) {
        QTest::newRow(name) << QByteArray("<msgbox>") + fields + "</msgbox>"
                            << "Copy" << keys << code;
    };
    box("other button", "2[#]Copy[#]Overwrite the target?[#]16384[#]65792", "alt+y", 16384);
    box("the last default counts", "4[#]Copy[#]x[#]16640[#]65792", "Return", 65536);
    box("escape flag is cleared", "1[#]Copy[#]x[#]1536", "Return", 1024);
    box("Escape is Cancel", "1[#]Copy[#]x[#]1024[#]4194304", "Escape", 4194304);
    box("no text", "0[#]Copy", "Return", 0);
    box("no number in a button field", "x[#]Copy[#]x[#]Yes[#]", "Return", 0);
    box("empty fields keep their place", "[#]Copy[#][#][#]1280", "Return", 1024);
    box("only numbers of no button", "1[#]Copy[#]x[#]1[#]-1", "Return", 0);
    box("numbers of no button", "99[#]Copy[#]x[#]7[#]-1[#]2147483647[#]1280", "Return", 1024);
    box("buttons after the tenth", "0[#]Copy[#]x[#]0[#]0[#]0[#]0[#]0[#]0[#]0[#]0[#]0[#]1280[#]4194560",
        "Return", 1024);
}

void boxesTest::answers()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, title);
    QFETCH(QString, keys);
    daemonProcess daemon(m_bare);
    const auto commands = daemon.openCommands();
    commands->send(message);
    QVERIFY(m_bare.waitForFocus(title).id);
    m_bare.key(keys);
    QTEST(commands->answer(), "code");
    QCOMPARE(commands->pending(), QByteArray());
    QTRY_VERIFY_WITH_TIMEOUT(!m_bare.shows(title), patienceMs);
}

void boxesTest::areClosedAsByEscape()
{
    daemonProcess daemon(m_managed);
    const auto commands = daemon.openCommands();
    commands->send("<msgbox>1[#]Copy[#]x[#]16384[#]65792</msgbox>");
    QVERIFY(m_managed.waitForFocus("Copy").id);
    m_managed.key("alt+F4");
    QCOMPARE(commands->answer(), qint64{65536});
    commands->send("<assert>x</assert>");
    QVERIFY(m_managed.waitForFocus(assertionTitle).id);
    m_managed.key("alt+F4");
    QCOMPARE(commands->answer(), qint64{0x40000});
}

void boxesTest::savesTheAssertionOnTheClipboard()
{
    daemonProcess daemon(m_managed);
    const auto commands = daemon.openCommands();
    const QByteArray text("if (a < b)\n\t<i>return</i> \"\xe4\";");
    commands->send("<assert>" + text + "</assert>");
    const auto box = m_managed.waitForWindow(assertionTitle);
    QVERIFY(box.id);
    // The third of five buttons in a row is in the middle.
    m_managed.click({box.area.center().x(), lastButton(box.area).y()});
    QCOMPARE(commands->answer(), qint64{0x4000});
    QCOMPARE(m_managed.run("xclip", {"-selection", "clipboard", "-o"}), QString::fromLatin1(text).toUtf8());
}

void boxesTest::areAnsweredInAnyOrder()
{
    daemonProcess daemon(m_managed);
    const auto older = daemon.openCommands();
    const auto newer = daemon.openCommands();
    // The older one is wider, so that its button is not covered.
    older->send("<msgbox>1[#]Older[#]" + QByteArray("wide ").repeated(16) + "[#]1024</msgbox>");
    const QPoint button = lastButton(m_managed.waitForFocus("Older").area);
    newer->send("<msgbox>1[#]Newer[#]x[#]2097152</msgbox>");
    QVERIFY(m_managed.waitForFocus("Newer").id);
    m_managed.click(button);
    QCOMPARE(older->answer(), qint64{1024});
    QVERIFY(m_managed.waitForFocus("Newer").id);
    m_managed.key("Return");
    QCOMPARE(newer->answer(), qint64{2097152});
    QCOMPARE(older->pending() + newer->pending(), QByteArray());
}

void boxesTest::areAnsweredOneAfterTheOther()
{
    daemonProcess daemon(m_bare);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    commands->send(twoBoxes + "<progress>create:0;x</progress>");
    for (const auto &[title, code] : {std::pair{"First", 1024}, std::pair{"Second", 2097152}}) {
        QVERIFY(m_bare.waitForFocus(title).id);
        m_bare.key("Return");
        QCOMPARE(commands->answer(), qint64{code});
    }
    QVERIFY(events->hears("isShown"));
}

void boxesTest::areAnsweredToTheClientThatAsked()
{
    daemonProcess daemon(m_bare);
    const auto events = daemon.openEvents();
    const auto asker = daemon.openCommands();
    const auto other = daemon.openCommands();
    asker->send(twoBoxes);
    QVERIFY(m_bare.waitForWindow("First").id);
    // Makes the daemon go on with what waits behind the first box.
    other->progress("create:0;x");
    QVERIFY(events->hears("isShown"));
    for (const auto &[title, code] : {std::pair{"Second", 2097152}, std::pair{"First", 1024}}) {
        QVERIFY(m_bare.waitForFocus(title).id);
        m_bare.key("Return");
        QCOMPARE(asker->answer(), qint64{code});
    }
    QCOMPARE(other->pending(), QByteArray());
}

void boxesTest::keepInputFromTheDialog()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(magenta + mode);
    const auto commands = daemon.openCommands();
    commands->send("<progress>addButt:0;Stop</progress><progress>addButt:1;Go</progress>");
    const QRect dialog = screen().waitForFocus("unknown").area;
    const QPoint stop = dialog.bottomLeft() + QPoint(84, -48);
    screen().click(stop);
    QVERIFY(events->hears("clicked:0"));

    commands->send("<msgbox>1[#]Copy[#]x[#]1280</msgbox>");
    const QRect box = screen().waitForFocus("Copy").area;
    screen().click(stop);
    screen().click(stop);
    screen().click({20, 20}); // the busy window
    QVERIFY(screen().shows("unknown"));
    screen().drag(dialog.topLeft() + QPoint(30, 10), dialog.topLeft() + QPoint(60, 30));
    QCOMPARE(screen().waitForWindow("unknown").area, dialog);

    // The key that answers the box is released when the dialog already has the focus again.
    screen().click(box.center() - QPoint(0, 20));
    QVERIFY(screen().waitForFocus("Copy").id);
    screen().xdotool("keydown Return");
    QCOMPARE(commands->answer(), qint64{1024});
    QTRY_VERIFY_WITH_TIMEOUT(!screen().shows("Copy"), patienceMs);
    screen().xdotool("keyup Return");

    commands->progress("activate");
    QCOMPARE(events->eventsUntil("isActivated"), "isActivated");
    QVERIFY(screen().waitForFocus("unknown").id);
    screen().click(stop);
    QCOMPARE(events->eventsUntil("clicked:0"), "clicked:0");
}

void boxesTest::areNeverHiddenBehindTheDialog()
{
    QFETCH(QByteArray, mode);
    daemonProcess daemon(screen());
    const auto events = daemon.openEvents(magenta + mode);
    const auto commands = daemon.openCommands();
    commands->progress("create:0;x");
    QVERIFY(screen().waitForFocus("unknown").id);
    commands->send("<msgbox>1[#]Copy[#]Overwrite?[#]16384[#]65536</msgbox>");
    const QRect box = screen().waitForFocus("Copy").area;

    const auto isSeen = [&] {
        const QImage picture = screen().picture();
        return magentaPixels(picture, box) == 0 && magentaPixels(picture, picture.rect()) > 10'000;
    };
    const QRect dialog = screen().waitForWindow("unknown").area;
    QVERIFY2(dialog.intersects(box), "nothing to hide");
    for (const char *attempt : {"activate", "create:1;y", "remove:1", "busyOn", "addButt:0;x"}) {
        events->progress(attempt);
        QVERIFY(events->isServed());
        // Gives what should not happen the time to happen.
        QTest::qWait(100);
        QVERIFY2(QTest::qWaitFor(isSeen, patienceMs), attempt);
    }
    screen().click(dialog.topLeft() + QPoint(30, 10));
    events->configure("paintOffset=1|1");
    QTest::qWait(100);
    QTRY_VERIFY_WITH_TIMEOUT(isSeen(), patienceMs);

    // And behind no box, the dialog is in front again.
    screen().click(lastButton(box));
    QCOMPARE(commands->answer(), qint64{65536});
    QTRY_VERIFY_WITH_TIMEOUT(magentaPixels(screen().picture(), box & dialog) > 100, patienceMs);
}

void boxesTest::doNotKeepTheDaemon()
{
    for (const bool byClosing : {false, true}) {
        daemonProcess daemon(m_bare);
        const auto events = daemon.openEvents();
        const auto asker = daemon.openCommands();
        asker->send("<assert>x</assert>");
        QVERIFY(m_bare.waitForWindow(assertionTitle).id);
        asker->send("<msgbox>[#]Cancel[#]x[#]1024[#]4194304</msgbox>");
        QVERIFY(m_bare.waitForWindow("Cancel").id);
        asker->send("<msgbox>[#]No escape[#]x[#]16384[#]65536</msgbox>");
        QVERIFY(m_bare.waitForWindow("No escape").id);
        if (byClosing) {
            asker->close();
        } else {
            asker->send("<exit/>");
            QVERIFY(asker->waitForClosed());
            QCOMPARE(asker->pending(), QByteArray(12, '\0'));
        }
        QVERIFY(events->hears("shutDown"));
        QCOMPARE(daemon.waitForEnd(), 0);
    }
}

void boxesTest::outliveTheirAsker()
{
    daemonProcess daemon(m_bare);
    const auto events = daemon.openEvents();
    const auto other = daemon.openCommands();
    const auto asker = daemon.openCommands();
    asker->send("<msgbox>1[#]Copy[#]x[#]1024</msgbox>");
    QVERIFY(m_bare.waitForFocus("Copy").id);
    asker->close();
    // It takes the slot, and possibly the place in memory, of the one that has gone.
    const auto later = daemon.openCommands();
    m_bare.key("Return");
    QTRY_VERIFY_WITH_TIMEOUT(!m_bare.shows("Copy"), patienceMs);
    QVERIFY(events->isServed());
    QCOMPARE(later->pending() + other->pending(), QByteArray());
}

void boxesTest::areRefusedWhenThereAreTooMany()
{
    daemonProcess daemon(m_bare);
    const auto events = daemon.openEvents();
    const auto asker = daemon.openCommands();
    constexpr int count = 20'000;
    asker->send(QByteArray("<msgbox>1[#]Copy[#]x[#]1024</msgbox>").repeated(count));
    // Makes the daemon go on with what waits behind the first box.
    asker->progress("activate");
    QVERIFY(events->hears("isActivated"));
    constexpr int open = 32;
    QCOMPARE(asker->read(4 * (count - open)).count('\0'), 4 * (count - open));
    QCOMPARE(m_bare.windows("Copy").size(), open);
    QCOMPARE(asker->pending(), QByteArray());
}

QTEST_GUILESS_MAIN(boxesTest)
#include "boxesTest.moc"
