#include "tests/support/daemonLog.h"
#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QTest>

/// The busy window on the screen: its place, its size, and when it is there.
class busyWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void placeAndSize();
    void changesAtOnce();
    void comesAndGoes();
    void showsThePercentFromBelow();

private:
    /// The toolkit gives the window the daemon's name for a title.
    QRect area() const { return m_screen.waitForWindow("progressd").area; }

    virtualScreen m_screen;
};

namespace
{

void writeImage(const daemonProcess &daemon, const QString &name, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::green);
    QVERIFY(image.save(daemon.directory() + '/' + name));
}

} // namespace

void busyWindowTest::placeAndSize()
{
    struct {
        bool hasImage;
        const char *configuration;
        QRect expected;
    } const windows[] = {
        {false, "busyIndicator=10|20|70|0|empty", {10, 20, 70, 32}},
        {true, "busyIndicator=0|0|-1|0|empty", {0, 0, 100, 50}},
        {true, "busyIndicator=10|20|120|80|empty", {10, 20, 120, 80}},
        {true, "busyIndicator=10|20|60|40|empty", {10, 20, 60, 40}},
        {false, "busyIndicator=10|20|0|0|empty;paintOffset=5|-7", {15, 13, 32, 32}},
    };
    for (const auto &window : windows) {
        daemonProcess daemon(m_screen);
        if (window.hasImage)
            writeImage(daemon, "Busy.png", {100, 50});
        const auto events = daemon.openEvents(window.configuration);
        events->progress("busyOn");
        QCOMPARE(area(), window.expected);
    }
}

void busyWindowTest::changesAtOnce()
{
    daemonProcess daemon(m_screen);
    const daemonLog log;
    const auto events = daemon.openEvents();
    events->progress("busyOn"); // nothing to see while there is no position
    QVERIFY(events->isServed());
    QVERIFY(!m_screen.shows("progressd"));
    QVERIFY(log.contains(": ++++ busy pixmap not found: result=0000\n"));
    QVERIFY(log.contains(": Busy.png result=0000\n"));

    // A hidden window gets its place when it is shown.
    events->configure("busyIndicator=10|20|0|0|empty");
    QVERIFY(events->isServed());
    QVERIFY(!m_screen.shows("progressd"));
    QVERIFY(log.contains(": ---- setting busy pixmap  result=0000\n"));
    events->progress("busyOn");
    QCOMPARE(area(), QRect(10, 20, 32, 32));

    writeImage(daemon, "Other.png", {100, 50});
    events->configure("busyIndicator=30|40|0|0|Other.png;paintOffset=3|4");
    QTRY_COMPARE_WITH_TIMEOUT(area(), QRect(33, 44, 100, 50), patienceMs);
    // The image is forgotten, not only hidden.
    events->configure("busyIndicator=30|40|0|0|no such file.png");
    QTRY_COMPARE_WITH_TIMEOUT(area(), QRect(33, 44, 32, 32), patienceMs);
    // A visible one goes where it is sent, even off the screen; too few fields change no place.
    events->configure("busyIndicator=-20|40|0|0|empty");
    QTRY_COMPARE_WITH_TIMEOUT(area(), QRect(-17, 44, 32, 32), patienceMs);
    events->configure("busyIndicator=7|8");
    events->configure("paintOffset=9");
    QVERIFY(events->isServed());
    QCOMPARE(area(), QRect(-17, 44, 32, 32));
}

void busyWindowTest::comesAndGoes()
{
    const std::pair<QByteArrayList, bool> sequences[] = {
        {{"activate", "busyOff"}, false},
        {{"busyOn", "busyOff"}, false},
        {{"create:0;x", "remove:0"}, false},
        {{"busyOn", "create:0;x", "busyOff"}, true},
        {{"create:0;x", "messageStart", "busyOff"}, true},
        {{"busyOn", "create:0;x", "remove:0"}, true},
        {{"busyOn", "create:0;x", "busyOff", "remove:0"}, false},
    };
    for (const auto &[payloads, isShown] : sequences) {
        daemonProcess daemon(m_screen);
        const auto events = daemon.openEvents("busyIndicator=10|20|0|0|empty");
        for (const QByteArray &payload : payloads)
            events->progress(payload);
        QVERIFY(events->isServed());
        const bool expected = isShown;
        QVERIFY2(QTest::qWaitFor([&] { return m_screen.shows("progressd") == expected; }, patienceMs),
                 payloads.join(' '));
    }
}

void busyWindowTest::showsThePercentFromBelow()
{
    daemonProcess daemon(m_screen);
    writeImage(daemon, "Busy.png", {60, 230});
    const auto events = daemon.openEvents("windowStyle=#0000ff|#ffffff|#ff0000|#ff0000|#000000|#000000;"
                                          "busyIndicator=10|10|0|0|empty");
    events->progress("create:0;x");
    events->progress("update:0;40");
    const auto reds = [&] {
        // Up the bar, near its left edge, where no text is: the bar is 200 high, 26 pixels off the bottom.
        const QImage picture = m_screen.picture();
        int count = 0;
        for (int y = 10; y < 240; ++y)
            count += picture.pixelColor(20, y) == QColor(Qt::red);
        return picture.pixelColor(20, 200) == QColor(Qt::red) ? count : -1;
    };
    QTRY_VERIFY2_WITH_TIMEOUT(qAbs(reds() - 80) <= 8, "40 of 100", patienceMs);
    QCOMPARE(m_screen.picture().pixelColor(20, 230), QColor(Qt::green));
    // Without a run there is no percent.
    events->progress("busyOn");
    events->progress("remove:0");
    QTRY_COMPARE_WITH_TIMEOUT(m_screen.picture().pixelColor(20, 200), QColor(Qt::green), patienceMs);
}

QTEST_GUILESS_MAIN(busyWindowTest)
#include "busyWindowTest.moc"
