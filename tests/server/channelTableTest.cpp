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
    text += '|';
    m_table.walk([&](const QTcpSocket *channel) { text += name(channel); });
    return text;
}

void channelTableTest::slotRules_data()
{
    QTest::addColumn<QString>("steps"); // "+a" enters channel a, "-a" takes it out, "!a" is refused
    QTest::addColumn<QString>("result");

    QTest::newRow("one comes back") << "+a-a+b"
                                    << "b|b";
    QTest::newRow("slot 0 empty stops the walk") << "+a+b-a"
                                                 << "-b|";
    QTest::newRow("slot 0 is filled again") << "+a+b-a+c"
                                            << "cb|cb";
    QTest::newRow("other slots are not") << "+a+b-b+c"
                                         << "a-c|a";
    QTest::newRow("unknown one leaves") << "+a-b"
                                        << "a|a";
    QTest::newRow("all leave") << "+a+b-b-a"
                               << "--|";
    QTest::newRow("eleventh") << "+a+b+c+d+e+f+g+h+i+j!k"
                              << "abcdefghij|abcdefghij";
    QTest::newRow("eleventh after one has gone") << "+a+b+c+d+e+f+g+h+i+j-h-d+k"
                                                 << "abckefg-ij|abckefg";
    QTest::newRow("slot 0 first in a full table") << "+a+b+c+d+e+f+g+h+i+j-d-a+k+l!m-j+m"
                                                  << "kbclefghim|kbclefghim";
}

void channelTableTest::slotRules()
{
    QFETCH(QString, steps);
    QFETCH(QString, result);
    m_table.clear();
    for (qsizetype i = 0; i < steps.size(); i += 2) {
        QTcpSocket *channel = &m_channels[size_t(steps[i + 1].unicode() - u'a')];
        if (steps[i] == u'-')
            m_table.leave(channel);
        else
            QCOMPARE(m_table.enter(channel), steps[i] == u'+');
    }
    QCOMPARE(picture(), result);
    QCOMPARE(m_table.hasChannels(), result.contains(QRegularExpression("[a-z].*\\|")));
    QCOMPARE(m_table.at(channelTable::capacity), nullptr);
}

QTEST_APPLESS_MAIN(channelTableTest)
#include "channelTableTest.moc"
