#include "client/progressctl/runRecords.h"
#include "client/progressctl/recordsPlot.h"

#include <QTest>
#include <QXmlStreamReader>

/// How `progressctl records` reads and draws what a daemon has learned.
class runRecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void reads_data();
    void reads();
    void readsTheWholeRecord();
    void readsNoMoreThanTheDaemon();
    void drawsALineARun();
    void drawsOddRecords();
};

void runRecordsTest::reads_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QList<int>>("seconds"); // one a record
    QTest::newRow("empty") << QByteArray() << QList<int>{};
    QTest::newRow("version only") << QByteArray("fileversion=2\n") << QList<int>{};
    QTest::newRow("version 2") << QByteArray("fileversion=2\n000000000001:00000095:00000003:00000000.\n")
                               << QList<int>{95};
    QTest::newRow("version 1") << QByteArray("00000095:00000003:00000000.\n") << QList<int>{95};
    QTest::newRow("version 3 reads as 1") << QByteArray("fileversion=3\n95:3:0.\n") << QList<int>{95};
    QTest::newRow("carriage returns")
        << QByteArray("fileversion=2\r\n1:95:3:\r\n1:7:1:5.\r\n") << QList<int>{95, 7};
    QTest::newRow("no line feed") << QByteArray("fileversion=2\n1:95:3:0.") << QList<int>{95};
    QTest::newRow("useless totals") << QByteArray("fileversion=2\n1:0:3:0.\n1:-5:3:0.\n1:x:3:0.\n1:7:3:0.\n")
                                    << QList<int>{7};
    QTest::newRow("short lines") << QByteArray("fileversion=2\n1:95\n1:95:3\n:::\n\n") << QList<int>{};
    QTest::newRow("blanks and signs") << QByteArray("fileversion=2\n1: +95 :3:0.\n") << QList<int>{95};
    QTest::newRow("overflow") << QByteArray("fileversion=2\n1:99999999999:3:0.\n") << QList<int>{};
}

void runRecordsTest::reads()
{
    QFETCH(QByteArray, file);
    QList<int> seconds;
    for (const runRecord &record : recordsFromText(file.toStdString()))
        seconds.append(record.seconds);
    QTEST(seconds, "seconds");
}

void runRecordsTest::readsTheWholeRecord()
{
    const auto records =
        recordsFromText("fileversion=2\n001447671234:00000095:00000003:00000000.00001007.95100.-0001007\n");
    QCOMPARE(records.size(), size_t{1});
    const runRecord &record = records.front();
    QCOMPARE(record.lastSeen, 1447671234);
    QCOMPARE(record.timesFound, 3);
    QCOMPARE(record.course.size(), size_t{4});
    QCOMPARE(record.course[1].seconds, 1);
    QCOMPARE(record.course[1].progress, 7);
    QCOMPARE(record.course[2].seconds, 95);
    QCOMPARE(record.course[2].progress, 100);
    QCOMPARE(record.course[3].progress, -7);
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

struct picture {
    QList<QStringList> lines;
    bool isSound = true;
};

picture readPicture(const std::string &svg)
{
    picture read;
    QXmlStreamReader xml(QByteArray::fromStdString(svg));
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("polyline"))
            read.lines.append(xml.attributes()
                                  .value(QLatin1String("points"))
                                  .toString()
                                  .split(QLatin1Char(' '), Qt::SkipEmptyParts));
    }
    read.isSound = !xml.hasError();
    return read;
}

} // namespace

void runRecordsTest::drawsALineARun()
{
    const auto records = recordsFromText("fileversion=2\n1:100:3:00000.50050.100100.\n1:50:1:0.\n");
    const picture drawn = readPicture(plotOf(records, "a <b> & c"));
    QVERIFY(drawn.isSound);
    QCOMPARE(drawn.lines.size(), 2);
    // The plot is 650 wide and 430 high; its origin is at the lower left.
    QCOMPARE(drawn.lines[0], (QStringList{QStringLiteral("70.0,480.0"), QStringLiteral("395.0,265.0"),
                                          QStringLiteral("720.0,50.0"), QStringLiteral("720.0,50.0")}));
}

void runRecordsTest::drawsOddRecords()
{
    QVERIFY(readPicture(plotOf({}, "")).isSound);
    runRecord odd;
    odd.seconds = 2147483647;
    odd.course = {{-2147483, -999}, {2147483, 999}};
    const picture drawn = readPicture(plotOf({odd, runRecord{}}, "odd"));
    QVERIFY(drawn.isSound);
    QCOMPARE(drawn.lines.size(), 2);
}

QTEST_APPLESS_MAIN(runRecordsTest)
#include "runRecords.moc"
