#include "client/progressctl/runRecords.h"
#include "client/progressctl/recordsPlot.h"

#include <QTest>
#include <QXmlStreamReader>

/// How `progressctl records` reads and draws what a daemon has learned.
class runRecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void reads();
    void readsTheWholeRecord();
    void readsNoMoreThanTheDaemon();
    void drawsALineARun();
    void drawsOddRecords();
};

void runRecordsTest::reads()
{
    const std::pair<const char *, QList<int>> files[] = {
        {"fileversion=2\n", {}},
        {"00000095:00000003:00000000.\n", {95}},
        {"fileversion=3\n95:3:0.\n", {95}}, // reads as version 1
        {"fileversion=2\r\n1:95:3:\r\n1:7:1:5.\r\n", {95, 7}},
        {"fileversion=2\n1:95:3:0.", {95}},
        {"fileversion=2\n1:0:3:0.\n1:-5:3:0.\n1:x:3:0.\n1:7:3:0.\n", {7}}, // useless totals
        {"fileversion=2\n1:95\n1:95:3\n:::\n\n", {}},
        {"fileversion=2\n1: +95 :3:0.\n", {95}},
        {"fileversion=2\n1:99999999999:3:0.\n", {}},
    };
    for (const auto &[file, expected] : files) {
        QList<int> seconds;
        for (const runRecord &record : recordsFromText(file))
            seconds.append(record.seconds);
        QCOMPARE(seconds, expected);
    }
}

void runRecordsTest::readsTheWholeRecord()
{
    const auto records =
        recordsFromText("fileversion=2\n001447671234:00000095:00000003:00000000.00001007.95100.-0001007\n");
    QCOMPARE(records.size(), size_t{1});
    const runRecord &record = records.front();
    QCOMPARE(record.lastSeen, 1447671234);
    QCOMPARE(record.timesFound, 3);
    QStringList course;
    for (const runMoment &moment : record.course)
        course << QStringLiteral("%1 s %2").arg(moment.seconds).arg(moment.progress);
    QCOMPARE(course.join(", "), "0 s 0, 1 s 7, 95 s 100, -1 s -7");
}

void runRecordsTest::readsNoMoreThanTheDaemon()
{
    std::string file = "fileversion=2\n";
    for (int i = 0; i < 2000; ++i)
        file += "1:5:1:0.\n";
    QCOMPARE(recordsFromText(file).size(), size_t{1024});
}

namespace
{

/// The points of the picture's lines; nothing when it is no XML.
std::optional<QStringList> linesIn(const std::string &svg)
{
    QStringList lines;
    QXmlStreamReader xml(QByteArray::fromStdString(svg));
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("polyline"))
            lines << xml.attributes().value("points").toString().simplified();
    }
    return xml.hasError() ? std::nullopt : std::optional(lines);
}

} // namespace

void runRecordsTest::drawsALineARun()
{
    const auto records = recordsFromText("fileversion=2\n1:100:3:00000.50050.100100.\n1:50:1:0.\n");
    const auto lines = linesIn(plotOf(records, "a <b> & c"));
    QVERIFY(lines);
    QCOMPARE(lines->size(), 2);
    // The plot is 650 wide and 430 high; its origin is at the lower left.
    QCOMPARE(lines->first(), "70.0,480.0 395.0,265.0 720.0,50.0 720.0,50.0");
}

void runRecordsTest::drawsOddRecords()
{
    QVERIFY(linesIn(plotOf({}, "")));
    runRecord odd;
    odd.seconds = 2147483647;
    odd.course = {{-2147483, -999}, {2147483, 999}};
    const auto lines = linesIn(plotOf({odd, runRecord{}}, "odd"));
    QVERIFY(lines);
    QCOMPARE(lines->size(), 2);
}

QTEST_APPLESS_MAIN(runRecordsTest)
#include "runRecordsTest.moc"
