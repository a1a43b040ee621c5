#include "client/progressctl/pipeInput.h"
#include "client/progressctl/hearingCheck.h"
#include "client/progressctl/remainingTime.h"

#include <QTest>

/// How `progressctl pipe` reads its writer.
class pipeInputTest : public QObject
{
    Q_OBJECT

private slots:
    void reads();
    void takesLinesInAnyPieces();
    void complainsOnceAKind();
    void cutsEndlessLines();
    void estimates();
    void noticesADeafChannel();
};

void pipeInputTest::reads()
{
    struct {
        const char *input;
        int percent; // -1: none
        const char *text = nullptr;
        size_t complaints = 0;
    } const inputs[] = {
        {"1\n42", 42},
        {"99.9\n", 99},
        {" 7.5 % \r\n", 7},
        {"+5\n", 5},
        {"1\n#a\n2\n#  a file \n", 2, "a file"},
        {"#a\n#\n", -1, ""},
        {"\n \n\r\n", -1},
        {"5\n30,5\n", 5, nullptr, 1},
        {"5\n50 files\n", 5, nullptr, 1},
        {"5\nnan\ninf\n", 5, nullptr, 1},
        {"5\n%\n", 5, nullptr, 1},
        {"50\n-1\n", 0, nullptr, 1},
        {"1e300\n", 100, nullptr, 1},
        {"#a;b\n", -1, "a,b", 1},
    };
    for (const auto &each : inputs) {
        pipeInput reading;
        reading.feed(each.input);
        reading.end();
        QVERIFY2(reading.percent().value_or(-1) == each.percent, each.input);
        QVERIFY2(each.text ? reading.text() == each.text : !reading.text(), each.input);
        QVERIFY2(reading.takeComplaints().size() == each.complaints, each.input);
    }
}

void pipeInputTest::takesLinesInAnyPieces()
{
    pipeInput reading;
    for (const char each : std::string("12\n#some text\n3\n"))
        reading.feed({&each, 1});
    QVERIFY(reading.takeComplaints().empty());
    QCOMPARE(reading.percent(), 3);
    QCOMPARE(*reading.text(), std::string("some text"));
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
    reading.feed("#" + std::string(600, 'x'));
    reading.feed(std::string(100'000, 'x'));
    reading.feed("\n50\n");
    QCOMPARE(reading.percent(), 50);
    QCOMPARE(reading.text()->size(), size_t{1023});
    QCOMPARE(reading.takeComplaints().size(), size_t{1});
}

void pipeInputTest::estimates()
{
    QVERIFY(!secondsLeft(5, 0));
    QCOMPARE(remainingText(*secondsLeft(10, 25)), std::string("0:30 remaining"));
    QCOMPARE(remainingText(*secondsLeft(65, 50)), std::string("1:05 remaining"));
    QCOMPARE(remainingText(*secondsLeft(7384, 50)), std::string("2:03:04 remaining"));
    QCOMPARE(remainingText(*secondsLeft(10, 100)), std::string("0:00 remaining"));
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
#include "pipeInputTest.moc"
