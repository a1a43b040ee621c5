#include "server/channelTable.h"

#include <QRegularExpression>
#include <QTcpSocket>
#include <QTest>

#include <array>

/// Channels are named by letters; "-" is an empty slot.
class channelTableTest : public QObject
{
    Q_OBJECT

private slots:
    void slotRules_data();
    void slotRules();
    void clearForgetsAll();

private:
    QString picture() const;

    std::array<QTcpSocket, 16> m_channels;
    channelTable m_table;
};

/// The slots up to the count, and behind a bar what a walk reaches.
QString channelTableTest::picture() const
{
    const auto name = [this](const QTcpSocket *channel) {
        return channel ? QChar(char16_t(u'a' + (channel - m_channels.data()))) : QChar(u'-');
    };
    QString text;
    for (int slot = 0; slot < m_table.count(); ++slot)
        text += name(m_table.at(slot));
    text += QLatin1Char('|');
    m_table.walk([&](const QTcpSocket *channel) { text += name(channel); });
    return text;
}

void channelTableTest::slotRules_data()
{
    QTest::addColumn<QString>("steps"); // "+a" enters channel a, "-a" takes it out, "!a" is refused
    QTest::addColumn<QString>("result");

    QTest::newRow("empty") << QString() << QStringLiteral("|");
    QTest::newRow("appended") << QStringLiteral("+a+b") << QStringLiteral("ab|ab");
    QTest::newRow("one comes back") << QStringLiteral("+a-a+b") << QStringLiteral("b|b");
    QTest::newRow("slot 0 empty stops the walk") << QStringLiteral("+a+b-a") << QStringLiteral("-b|");
    QTest::newRow("slot 0 is filled again") << QStringLiteral("+a+b-a+c") << QStringLiteral("cb|cb");
    QTest::newRow("other slots are not") << QStringLiteral("+a+b-b+c") << QStringLiteral("a-c|a");
    QTest::newRow("unknown one leaves") << QStringLiteral("+a-b") << QStringLiteral("a|a");
    QTest::newRow("eleventh") << QStringLiteral("+a+b+c+d+e+f+g+h+i+j!k")
                              << QStringLiteral("abcdefghij|abcdefghij");
    QTest::newRow("eleventh after one has gone")
        << QStringLiteral("+a+b+c+d+e+f+g+h+i+j-h-d+k") << QStringLiteral("abckefg-ij|abckefg");
    QTest::newRow("slot 0 first in a full table")
        << QStringLiteral("+a+b+c+d+e+f+g+h+i+j-d-a+k+l!m-j+m") << QStringLiteral("kbclefghim|kbclefghim");
}

void channelTableTest::slotRules()
{
    QFETCH(QString, steps);
    QFETCH(QString, result);
    m_table = channelTable();
    for (qsizetype i = 0; i < steps.size(); i += 2) {
        QTcpSocket *channel = &m_channels[size_t(steps[i + 1].unicode() - u'a')];
        if (steps[i] == u'-')
            m_table.leave(channel);
        else
            QCOMPARE(m_table.enter(channel), steps[i] == u'+');
    }
    QCOMPARE(picture(), result);
    QCOMPARE(m_table.hasChannels(), result.contains(QRegularExpression(QStringLiteral("[a-z].*\\|"))));
    QCOMPARE(m_table.at(channelTable::capacity), nullptr);
}

void channelTableTest::clearForgetsAll()
{
    m_table = channelTable();
    QVERIFY(m_table.enter(&m_channels[0]));
    m_table.clear();
    QCOMPARE(m_table.count(), 0);
    QVERIFY(!m_table.hasChannels());
}

QTEST_APPLESS_MAIN(channelTableTest)
#include "channelTableTest.moc"
