#include "client/progressctl/pipeInput.h"
#include "client/progressctl/hearingCheck.h"
#include "client/progressctl/remainingTime.h"

#include <QTest>

/// How `progressctl pipe` reads its writer.
class pipeInputTest : public QObject
{
    Q_OBJECT

private slots:
    void reads_data();
    void reads();
    void takesLinesInAnyPieces();
    void complainsOnceAKind();
    void cutsEndlessLines();
    void estimates_data();
    void estimates();
    void noticesADeafChannel();
};

void pipeInputTest::reads_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("percent"); // -1: none
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("complaints");
    const QString none;
    QTest::newRow("nothing") << QByteArray() << -1 << none << 0;
    QTest::newRow("number") << QByteArray("42\n") << 42 << none << 0;
    QTest::newRow("without line feed") << QByteArray("1\n42") << 42 << none << 0;
    QTest::newRow("decimals") << QByteArray("99.9\n") << 99 << none << 0;
    QTest::newRow("percent sign") << QByteArray(" 7.5 % \r\n") << 7 << none << 0;
    QTest::newRow("sign") << QByteArray("+5\n") << 5 << none << 0;
    QTest::newRow("text") << QByteArray("#  a file \n") << -1 << QStringLiteral("a file") << 0;
    QTest::newRow("newest of both") << QByteArray("1\n#a\n2\n#b\n") << 2 << QStringLiteral("b") << 0;
    QTest::newRow("empty text") << QByteArray("#a\n#\n") << -1 << QString(QLatin1String("")) << 0;
    QTest::newRow("empty lines") << QByteArray("\n \n\r\n") << -1 << none << 0;
    QTest::newRow("decimal comma") << QByteArray("5\n30,5\n") << 5 << none << 1;
    QTest::newRow("words") << QByteArray("5\n50 files\n") << 5 << none << 1;
    QTest::newRow("not a number") << QByteArray("5\nnan\ninf\n") << 5 << none << 1;
    QTest::newRow("just a sign") << QByteArray("5\n%\n") << 5 << none << 1;
    QTest::newRow("above") << QByteArray("150\n") << 100 << none << 1;
    QTest::newRow("below") << QByteArray("50\n-1\n") << 0 << none << 1;
    QTest::newRow("huge") << QByteArray("1e300\n") << 100 << none << 1;
    QTest::newRow("separator") << QByteArray("#a;b\n") << -1 << QStringLiteral("a,b") << 1;
}

void pipeInputTest::reads()
{
    QFETCH(QByteArray, input);
    pipeInput reading;
    reading.feed(input.toStdString());
    reading.end();
    QTEST(reading.percent().value_or(-1), "percent");
    QTEST(reading.text() ? QString::fromStdString(*reading.text()) : QString(), "text");
    QTEST(static_cast<int>(reading.takeComplaints().size()), "complaints");
}

void pipeInputTest::takesLinesInAnyPieces()
{
    pipeInput reading;
    for (const char each : std::string("12\n#some text\n3")) {
        reading.feed({&each, 1});
        QVERIFY(reading.takeComplaints().empty());
    }
    QCOMPARE(reading.percent(), 12);
    QCOMPARE(*reading.text(), std::string("some text"));
    reading.end();
    QCOMPARE(reading.percent(), 3);
}

void pipeInputTest::complainsOnceAKind()
{
    pipeInput reading;
    reading.feed("fast\n101\nslow\n102\n#;\n#;\n");
    const std::vector<std::string> complaints = reading.takeComplaints();
    QCOMPARE(complaints.size(), size_t{3});
    QVERIFY(QByteArray::fromStdString(complaints[0]).endsWith(": fast"));
    QVERIFY(QByteArray::fromStdString(complaints[1]).endsWith(": 101"));
    reading.feed("x\n103\n#;\n");
    QVERIFY(reading.takeComplaints().empty());
}

void pipeInputTest::cutsEndlessLines()
{
    pipeInput reading;
    reading.feed("#");
    for (int i = 0; i < 100; ++i)
        reading.feed(std::string(1000, 'x'));
    reading.feed("\n50\n");
    QCOMPARE(reading.percent(), 50);
    QCOMPARE(reading.text()->size(), size_t{1023});
    QCOMPARE(reading.takeComplaints().size(), size_t{1});
}

void pipeInputTest::estimates_data()
{
    QTest::addColumn<double>("elapsed");
    QTest::addColumn<int>("percent");
    QTest::addColumn<QString>("text"); // empty: no estimate
    QTest::newRow("nothing done") << 5.0 << 0 << QString();
    QTest::newRow("quarter") << 10.0 << 25 << QStringLiteral("0:30 remaining");
    QTest::newRow("minutes") << 65.0 << 50 << QStringLiteral("1:05 remaining");
    QTest::newRow("hours") << 7384.0 << 50 << QStringLiteral("2:03:04 remaining");
    QTest::newRow("done") << 10.0 << 100 << QStringLiteral("0:00 remaining");
}

void pipeInputTest::estimates()
{
    QFETCH(double, elapsed);
    QFETCH(int, percent);
    const auto left = secondsLeft(elapsed, percent);
    QTEST(left ? QString::fromStdString(remainingText(*left)) : QString(), "text");
}

void pipeInputTest::noticesADeafChannel()
{
    const hearingCheck::time start{};
    hearingCheck check;
    check.moved(9, start);
    QVERIFY(!check.overdueAt());
    check.moved(10, start + std::chrono::seconds(1));
    check.moved(30, start + std::chrono::seconds(2));
    QVERIFY(check.overdueAt() == start + std::chrono::seconds(3));
    check.heard(30);
    QVERIFY(!check.overdueAt());
    check.moved(21, start);
    QVERIFY(!check.overdueAt());
}

QTEST_APPLESS_MAIN(pipeInputTest)
#include "pipeInput.moc"
