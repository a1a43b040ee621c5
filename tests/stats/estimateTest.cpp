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

    void snapshotEncoding_data();
    void snapshotEncoding();
    void decision_data();
    void decision();
    void tooFewSnapshots();
    void holdWithoutCandidate();
    void changeOfDuration();
    void otherRecordOfSameDuration();
    void dropLowersFoundCount();
    void logLines();
    void remaining_data();
    void remaining();
};

void estimateTest::snapshotEncoding_data()
{
    QTest::addColumn<int>("elapsed");
    QTest::addColumn<int>("actualProgress");
    QTest::addColumn<int>("snapshot");

    QTest::newRow("plain") << 12 << 345 << 12345;
    QTest::newRow("signature modulo 1000") << 12 << 4590 << 12590;
    QTest::newRow("before the first run") << -1 << 50 << -950;
    QTest::newRow("longest") << 2147482 << 999 << 2147482999;
    QTest::newRow("clock far ahead") << INT_MAX << 999 << 2147482999;
    QTest::newRow("clock far back") << INT_MIN << 0 << -2147482000;
}

void estimateTest::snapshotEncoding()
{
    QFETCH(int, elapsed);
    QFETCH(int, actualProgress);
    m_currentElapsed = elapsed;
    addSnapshot(actualProgress);
    QCOMPARE(m_nextSnap, 1);
    QTEST(m_snapshots[0], "snapshot");
}

void estimateTest::decision_data()
{
    QTest::addColumn<int>("signatureSum");
    QTest::addColumn<bool>("isFollowing");
    QTest::addColumn<estimateStep>("step");
    QTest::addColumn<int>("totalAfter");

    // Over four snapshots; the record followed before is another one, of 300 seconds.
    QTest::newRow("5.0, new") << 20 << false << estimateStep::display << 100;
    QTest::newRow("5.25, new") << 21 << false << estimateStep::nothing << -1;
    QTest::newRow("5.0, followed") << 20 << true << estimateStep::display << 100;
    QTest::newRow("5.25, followed") << 21 << true << estimateStep::display << 300;
    QTest::newRow("10.0, followed") << 40 << true << estimateStep::display << 300;
    QTest::newRow("10.25, followed") << 41 << true << estimateStep::dropped << -1;
    QTest::newRow("10.25, new") << 41 << false << estimateStep::nothing << -1;
}

void estimateTest::decision()
{
    QFETCH(int, signatureSum);
    QFETCH(bool, isFollowing);
    addRecord(100, 1, {0, 1000, 2000, 3000});
    const int followed = addRecord(300, 2, course(4, 500));
    setPool({signatureSum, 1000, 2000, 3000});
    if (isFollowing) {
        m_currentTotal = 300;
        m_currentFound = followed;
    }

    const estimateStep step = advanceEstimate(3, 1);
    QTEST(step, "step");
    QTEST(m_currentTotal, "totalAfter");
    QCOMPARE(m_currentFound, m_currentTotal == 100 ? 0 : m_currentTotal == 300 ? followed : -1);
    const bool isLeft = isFollowing && m_currentTotal != 300;
    QCOMPARE(m_snapshotfound[followed], isLeft ? 1 : 2);
    QCOMPARE(m_snapshotfound[0], 1);
}

void estimateTest::tooFewSnapshots()
{
    addRecord(100, 1, {0, 1000, 2000, 3000});
    setPool({0, 1000});
    QCOMPARE(advanceEstimate(1, 1), estimateStep::nothing);
    QCOMPARE(m_snapshotfits[0], -7);
    addSnapshot(0);
    QCOMPARE(advanceEstimate(1, 1), estimateStep::display);
}

void estimateTest::holdWithoutCandidate()
{
    const int followed = addRecord(100, 1, {0, 1000, 2000, 3000});
    setPool({0, 1000, 2000});
    QCOMPARE(advanceEstimate(2, 1), estimateStep::display);

    // The run has gone on far beyond the record's last snapshot.
    for (int i = 0; i < 10; ++i)
        addSnapshot(500);
    QCOMPARE(advanceEstimate(3, 1), estimateStep::display);
    QCOMPARE(m_currentTotal, 100);
    QCOMPARE(m_currentFound, followed);
    QCOMPARE(m_snapshotfound[followed], 1);
}

void estimateTest::changeOfDuration()
{
    addRecord(95, 2, {0, 1000, 2000, 3000});
    addRecord(120, 1, {0, 1000, 2000, 3020});
    setPool({0, 1000, 2000});
    QCOMPARE(advanceEstimate(2, 1), estimateStep::display);
    QCOMPARE(m_currentTotal, 95);
    m_currentElapsed = 3;
    addSnapshot(18);
    QCOMPARE(advanceEstimate(3, 1), estimateStep::display);
    QCOMPARE(m_currentTotal, 120);
    QCOMPARE(m_currentFound, 1);
    QCOMPARE(m_snapshotfound[0], 1);
    QCOMPARE(m_snapshotfound[1], 1);
}

void estimateTest::otherRecordOfSameDuration()
{
    addRecord(95, 2, {0, 1000, 2000, 3000});
    addRecord(95, 1, {0, 1000, 2000, 3020});
    setPool({0, 1000, 2000});
    advanceEstimate(2, 1);
    m_currentElapsed = 3;
    addSnapshot(18);
    QCOMPARE(advanceEstimate(3, 1), estimateStep::display);
    QCOMPARE(m_currentFound, 0);
    QCOMPARE(m_snapshotfound[0], 2);
}

void estimateTest::dropLowersFoundCount()
{
    const int followed = addRecord(100, 1, {0, 1000, 2000, 3000});
    setPool({0, 1000, 2000});
    QCOMPARE(advanceEstimate(2, 1), estimateStep::display);
    m_currentElapsed = 3;
    addSnapshot(900);
    QCOMPARE(advanceEstimate(3, 1), estimateStep::dropped);
    QCOMPARE(m_snapshotfound[followed], 0);
    QCOMPARE(m_currentTotal, -1);

    // A record that has lost all its runs is followed no more, and its count does not fall below 0.
    setPool({0, 1000, 2000});
    QCOMPARE(advanceEstimate(2, 1), estimateStep::nothing);
    lowerFoundCount(followed);
    QCOMPARE(m_snapshotfound[followed], 0);
}

void estimateTest::logLines()
{
    const int identity = 1'000'000'000 + getpid();
    addRecord(95, 2, {0, 1000, 2000, 3000});
    addRecord(120, 2, {4, 1004, 2004, 3024});
    m_currentTotal = 120;
    m_currentFound = 1;
    const logWatch log;
    setPool({0, 1000, 2000});
    advanceEstimate(2, identity);
    QVERIFY(log.contains({"---- active dialog is result=" + QByteArray::number(identity),
                          "found remaining duration/index result=95000",
                          "found incernity in u result=0000:0000000.0004000.",
                          "dropping data set with index  result=0001"}));
    m_currentElapsed = 3;
    addSnapshot(145);
    QCOMPARE(advanceEstimate(3, identity), estimateStep::dropped);
    QVERIFY(log.contains({"   ++ resetting current duration/index result=3001",
                          "   ++ resetting incernity in u result=33250:0036250.0033250.",
                          "dropping data set with index  result=0000"}));
}

void estimateTest::remaining_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("text");

    QTest::newRow("331") << 331 << "(6 min remaining)";
    QTest::newRow("330") << 330 << "(5 min remaining)";
    QTest::newRow("301") << 301 << "(5 min remaining)";
    QTest::newRow("300") << 300 << "(5:00 remaining)";
    QTest::newRow("185") << 185 << "(3:05 remaining)";
    QTest::newRow("60") << 60 << "(1:00 remaining)";
    QTest::newRow("59") << 59 << "(59 s remaining)";
    QTest::newRow("0") << 0 << "(0 s remaining)";
    QTest::newRow("-1") << -1 << "";
    QTest::newRow("most") << INT_MAX << "(35791394 min remaining)";
    QTest::newRow("least") << INT_MIN << "";
}

void estimateTest::remaining()
{
    QFETCH(int, seconds);
    QTEST(remainingText(seconds), "text");
}

QTEST_APPLESS_MAIN(estimateTest)
#include "estimateTest.moc"
