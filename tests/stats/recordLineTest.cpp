#include "stats/recordLine.h"

#include "tests/stats/situation.h"

#include <QRandomGenerator>
#include <QTest>

#include <climits>

class recordLineTest : public QObject
{
    Q_OBJECT

private slots:
    void readsNumbersAsTheToolkit();
    void parse_data();
    void parse();
};

namespace
{

std::string_view viewOf(const QByteArray &text)
{
    return {text.constData(), static_cast<std::size_t>(text.size())};
}

} // namespace

void recordLineTest::readsNumbersAsTheToolkit()
{
    QRandomGenerator random(20160);
    constexpr char alphabet[] = "0123456789-+ \t.a\xa0";
    for (int i = 0; i < 20000; ++i) {
        QByteArray text(random.bounded(12), '0');
        for (char &character : text)
            character = alphabet[random.bounded(random.bounded(2) ? 10 : int(sizeof alphabet) - 1)];
        QCOMPARE(readNumber(viewOf(text)), QString::fromLatin1(text).toInt());
    }
}

void recordLineTest::parse_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<uint>("time");
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("found");
    QTest::addColumn<course>("snapshots");
    const auto row = [](const char *name, const QByteArray &line, uint time, int total, int found,
                        const course &snapshots) {
        QTest::newRow(name) << line << time << total << found << snapshots;
    };
    row("usual", "001447671234:00000095:00000003:00000000.00001007.00002015.", 1447671234, 95, 3,
        {0, 1007, 2015});
    row("more fields", "1:2:3:4.:5.", 1, 2, 3, {4});
    row("no last full stop", "1:2:3:4.5", 1, 2, 3, {4, 5});
    row("empty snapshots", "1:2:3:..4.", 1, 2, 3, {0, 0, 4});
    row("negative", "-1:-2:-3:-0000004.", UINT_MAX, -2, -3, {-4});
    row("long numbers", "1:2:3:2147483647.-2147483648.0000000000000000005.2147483648.99999999999.", 1, 2, 3,
        {INT_MAX, INT_MIN, 5, 0, 0});
    row("unreadable", "x:2 :a:4. 5.6x.7 .", 0, 2, 0, {4, 5, 0, 7});
    row("zero bytes", QByteArray("1:2:3:4.5\0.6.", 13), 1, 2, 3, {4, 0, 6});
    row("more snapshots than a run has", "1:2:3:" + QByteArray("7.").repeated(5000), 1, 2, 3,
        course(4094, 7));
}

void recordLineTest::parse()
{
    QFETCH(QByteArray, line);
    recordLine record;
    record.snapshots = {9, 9, 9};
    QVERIFY(parseRecordLine(viewOf(line), columnsVersion2, record));
    QTEST(record.time, "time");
    QTEST(record.total, "total");
    QTEST(record.found, "found");
    QTEST(record.snapshots, "snapshots");
}

QTEST_APPLESS_MAIN(recordLineTest)
#include "recordLineTest.moc"
