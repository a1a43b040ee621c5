#include "stats/recordLine.h"

#include "tests/stats/situation.h"

#include <QRandomGenerator>
#include <QTest>

#include <climits>

class recordLineTest : public QObject
{
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void numbersAsTheToolkit();
    void lines_data();
    void lines();
    void tooFewFields_data();
    void tooFewFields();
    void format_data();
    void format();
};

void recordLineTest::numbers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("number");

    const auto row = [](const QByteArray &text, int number) {
        QTest::newRow('"' + text.toPercentEncoding(" +:") + '"') << text << number;
    };
    row("", 0);
    row("00000047", 47);
    row("000000000000047", 47);
    row("2147483647", INT_MAX);
    row("2147483648", 0);
    row("-2147483648", INT_MIN);
    row("-0000012", -12);
    row("+12", 12);
    row(" \t12\v\n", 12);
    row("1 2", 0);
    row("- 1", 0);
    row("--1", 0);
    row("12a", 0);
    row("0x10", 0);
    row("1,000", 0);
    row("1e3", 0);
    row(QByteArray("1\0", 2), 0);
    row(QByteArray("\0", 1), 0);
    row("99999999999999999999", 0);
}

void recordLineTest::numbers()
{
    QFETCH(QByteArray, text);
    QTEST(readNumber({text.constData(), static_cast<std::size_t>(text.size())}), "number");
}

void recordLineTest::numbersAsTheToolkit()
{
    QRandomGenerator random(20160);
    constexpr char alphabet[] = "0123456789-+ \t.a\xa0";
    for (int i = 0; i < 20000; ++i) {
        QByteArray text(random.bounded(12), '0');
        for (char &character : text)
            character = alphabet[random.bounded(random.bounded(2) ? 10 : int(sizeof alphabet) - 1)];
        QCOMPARE(readNumber({text.constData(), static_cast<std::size_t>(text.size())}),
                 QString::fromLatin1(text).toInt());
    }
}

void recordLineTest::lines_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<uint>("time");
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("found");
    QTest::addColumn<course>("snapshots");

    QTest::newRow("version 2") << 2
                               << QByteArray("001447671234:00000095:00000003:00000000.00001007.00002015.")
                               << 1447671234u << 95 << 3 << course{0, 1007, 2015};
    QTest::newRow("version 1") << 1 << QByteArray("00000095:00000003:00000000.00001007.") << 0u << 95 << 3
                               << course{0, 1007};
    QTest::newRow("version 2 read as 1")
        << 1 << QByteArray("001447671234:95:3:7.") << 0u << 1447671234 << 95 << course{3};
    QTest::newRow("no snapshots") << 2 << QByteArray("1:2:3:") << 1u << 2 << 3 << course{};
    QTest::newRow("more fields") << 2 << QByteArray("1:2:3:4.:5.") << 1u << 2 << 3 << course{4};
    QTest::newRow("no last full stop") << 2 << QByteArray("1:2:3:4.5") << 1u << 2 << 3 << course{4, 5};
    QTest::newRow("empty snapshots") << 2 << QByteArray("1:2:3:..4.") << 1u << 2 << 3 << course{0, 0, 4};
    QTest::newRow("negative") << 2 << QByteArray("-1:-2:-3:-0000004.") << UINT_MAX << -2 << -3 << course{-4};
    QTest::newRow("long") << 2 << QByteArray("1:2:3:2147482999.-2147482999.0000000000000000005.99999999999.")
                          << 1u << 2 << 3 << course{2147482999, -2147482999, 5, 0};
    QTest::newRow("unreadable") << 2 << QByteArray("x:2 :a:4. 5.6x.7 .") << 0u << 2 << 0
                                << course{4, 5, 0, 7};
    QTest::newRow("carriage returns")
        << 2 << QByteArray("1:\r2:3:4.5\r6.\r") << 1u << 2 << 3 << course{4, 56};
    QTest::newRow("zero bytes") << 2 << QByteArray("1:2:3:4.5\0.6.", 13) << 1u << 2 << 3 << course{4, 0, 6};
}

void recordLineTest::lines()
{
    QFETCH(int, version);
    QFETCH(QByteArray, line);
    recordLine record;
    record.snapshots = {9, 9, 9};
    QVERIFY(parseRecordLine({line.constData(), static_cast<std::size_t>(line.size())},
                            version == 2 ? columnsVersion2 : columnsVersion1, record));
    QTEST(record.time, "time");
    QTEST(record.total, "total");
    QTEST(record.found, "found");
    QTEST(record.snapshots, "snapshots");
}

void recordLineTest::tooFewFields_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("version 2") << 2 << QByteArray("1447671234:95:0000.1000.");
    QTest::newRow("version 1") << 1 << QByteArray("95:3");
    QTest::newRow("empty") << 1 << QByteArray();
}

void recordLineTest::tooFewFields()
{
    QFETCH(int, version);
    QFETCH(QByteArray, line);
    recordLine record;
    QVERIFY(!parseRecordLine({line.constData(), static_cast<std::size_t>(line.size())},
                             version == 2 ? columnsVersion2 : columnsVersion1, record));
}

void recordLineTest::format_data()
{
    QTest::addColumn<course>("snapshots");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("none") << course{} << QByteArray();
    QTest::newRow("usual") << course{0, 1007, 12345678} << QByteArray("00000000.00001007.12345678.");
    QTest::newRow("ends of the eight digits")
        << course{99999999, 100000000, -1, -9999999, -10000000}
        << QByteArray("99999999.100000000.-0000001.-9999999.-10000000.");
    QTest::newRow("longest") << course{INT_MIN, INT_MAX} << QByteArray("-2147483648.2147483647.");
}

void recordLineTest::format()
{
    QFETCH(course, snapshots);
    QFETCH(QByteArray, text);
    std::vector<char> storage;
    const auto line = formatRecordLine(4294967295u, 95, -3, snapshots, storage);
    QCOMPARE(QByteArray(line.data(), static_cast<qsizetype>(line.size())),
             "004294967295:00000095:-0000003:" + text + '\n');
}

QTEST_APPLESS_MAIN(recordLineTest)
#include "recordLineTest.moc"
