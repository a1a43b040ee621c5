#include "stats/estimate.h"

#include "stats/remainingText.h"
#include "stats/snapshots.h"
#include "tests/stats/situation.h"

#include <QTest>

#include <climits>
#include <unistd.h>

Q_DECLARE_METATYPE(estimateStep)

class estimateTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { startAnew(); }

    void snapshotEncoding();
    void decision_data();
    void decision();
    void candidates();
    void otherRecord();
    void logLines();
    void remaining_data();
    void remaining();
};

void estimateTest::snapshotEncoding()
{
    const std::tuple<int, int, int> snapshots[] = {
        {12, 4590, 12590},          // the signature modulo 1000
        {-1, 50, -950},             // before the first run
        {INT_MAX, 999, 2147482999}, // the clock was set far ahead
        {INT_MIN, 0, -2147482000},  // or far back
    };
    for (const auto &[elapsed, actualProgress, snapshot] : snapshots) {
        clearSnapshots();
        m_currentElapsed = elapsed;
        addSnapshot(actualProgress);
        QCOMPARE(m_snapshots[0], snapshot);
    }
}

void estimateTest::decision_data()
{
    QTest::addColumn<int>("signatureSum"); // over four snapshots
    QTest::addColumn<int>("found");        // of the record followed before, another one; -1 for none
    QTest::addColumn<estimateStep>("step");
    QTest::addColumn<int>("totalAfter");
    QTest::addColumn<int>("foundAfter");

    QTest::newRow("5.0, new") << 20 << -1 << estimateStep::display << 100 << -1;
    QTest::newRow("5.25, new") << 21 << -1 << estimateStep::nothing << -1 << -1;
    QTest::newRow("5.0, followed") << 20 << 2 << estimateStep::display << 100 << 1;
    QTest::newRow("5.25, followed") << 21 << 2 << estimateStep::display << 300 << 2;
    QTest::newRow("10.0, followed") << 40 << 2 << estimateStep::display << 300 << 2;
    QTest::newRow("10.25, followed") << 41 << 2 << estimateStep::dropped << -1 << 1;
    QTest::newRow("10.25, followed in vain") << 41 << 0 << estimateStep::dropped << -1 << 0;
}

void estimateTest::decision()
{
    QFETCH(int, signatureSum);
    QFETCH(int, found);
    addRecord(100, 1, {0, 1000, 2000, 3000});
    const int other = addRecord(300, found, course(4, 500));
    setPool({signatureSum, 1000, 2000, 3000});
    if (found >= 0) {
        m_currentTotal = 300;
        m_currentFound = other;
    }
    QTEST(advanceEstimate(3, 1), "step");
    QTEST(m_currentTotal, "totalAfter");
    QCOMPARE(m_currentFound, m_currentTotal == 100 ? 0 : m_currentTotal == 300 ? other : -1);
    QTEST(m_snapshotfound[other], "foundAfter");
    QCOMPARE(m_snapshotfound[0], 1);
}

void estimateTest::candidates()
{
    const int record = addRecord(100, 1, {0, 1000, 2000, 3000});
    setPool({0, 1000});
    QCOMPARE(advanceEstimate(1, 1), estimateStep::nothing);
    addSnapshot(0);
    QCOMPARE(advanceEstimate(1, 1), estimateStep::display);
    // The run goes on far beyond the record's last snapshot.
    for (int i = 0; i < 10; ++i)
        addSnapshot(500);
    QCOMPARE(advanceEstimate(3, 1), estimateStep::display);
    QCOMPARE(m_currentTotal, 100);
    QCOMPARE(m_snapshotfound[record], 1);
}

void estimateTest::otherRecord()
{
    for (const int total : {120, 95}) {
        const bool isOtherDuration = total != 95;
        startAnew();
        addRecord(95, 2, {0, 1000, 2000, 3000});
        addRecord(total, 1, {0, 1000, 2000, 3020});
        setPool({0, 1000, 2000});
        QCOMPARE(advanceEstimate(2, 1), estimateStep::display);
        QCOMPARE(m_currentTotal, 95);
        m_currentElapsed = 3;
        addSnapshot(18);
        QCOMPARE(advanceEstimate(3, 1), estimateStep::display);
        QCOMPARE(m_currentTotal, total);
        QCOMPARE(m_currentFound, isOtherDuration ? 1 : 0);
        QCOMPARE(m_snapshotfound[0], isOtherDuration ? 1 : 2);
    }
}

void estimateTest::logLines()
{
    const int identity = 1'000'000'000 + getpid();
    addRecord(95, 2, {0, 1000, 2000, 3000});
    addRecord(120, 2, {4, 1004, 2004, 3024});
    m_currentTotal = 120;
    m_currentFound = 1;
    const daemonLog log;
    setPool({0, 1000, 2000});
    advanceEstimate(2, identity);
    m_currentElapsed = 3;
    addSnapshot(145);
    QCOMPARE(advanceEstimate(3, identity), estimateStep::dropped);
    QVERIFY(hasLines(log, {"---- active dialog is result=" + QByteArray::number(identity),
                           "found remaining duration/index result=95000",
                           "found incernity in u result=0000:0000000.0004000.",
                           "dropping data set with index  result=0001",
                           "   ++ resetting current duration/index result=3001",
                           "   ++ resetting incernity in u result=33250:0036250.0033250.",
                           "dropping data set with index  result=0000"}));
}

void estimateTest::remaining_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("331") << "(6 min remaining)";
    QTest::newRow("330") << "(5 min remaining)";
    QTest::newRow("300") << "(5:00 remaining)";
    QTest::newRow("185") << "(3:05 remaining)";
    QTest::newRow("60") << "(1:00 remaining)";
    QTest::newRow("59") << "(59 s remaining)";
    QTest::newRow("0") << "(0 s remaining)";
    QTest::newRow("-1") << "";
    QTest::newRow("2147483647") << "(35791394 min remaining)";
}

void estimateTest::remaining()
{
    QTEST(remainingText(QByteArray(QTest::currentDataTag()).toInt()), "text");
}

QTEST_APPLESS_MAIN(estimateTest)
#include "estimateTest.moc"
