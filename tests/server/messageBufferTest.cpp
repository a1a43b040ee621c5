#include "server/messageBuffer.h"

#include <QTest>

namespace
{

/// Name and payload of every message that is complete, in the order in which they are cut out.
QStringList cutAll(messageBuffer &buffer)
{
    constexpr const char *names[] = {"configuration", "assertion", "messageBox", "progress", "exit"};
    QStringList cut;
    while (const auto received = buffer.next())
        cut << QLatin1String(names[static_cast<int>(received->kind)]) + QLatin1Char(' ') +
                   QString::fromLatin1(received->payload);
    return cut;
}

} // namespace

class messageBufferTest : public QObject
{
    Q_OBJECT

private slots:
    void cuts_data();
    void cuts();
    void joinsPieces_data();
    void joinsPieces();
    void clearForgetsTheText();
    void costIsLinearInBytes();
    void costIsLinearInMessages();
};

void messageBufferTest::cuts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QByteArray>("rest");

    QTest::newRow("nothing") << QByteArray() << QStringList() << QByteArray();
    QTest::newRow("each kind, in the order of kinds")
        << QByteArray("<progress>p</progress><msgbox>m</msgbox><assert>a</assert>"
                      "<configuration>c</configuration>")
        << QStringList{"configuration c"} << QByteArray();
    QTest::newRow("kinds that arrive in their order")
        << QByteArray("<configuration>c</configuration><assert>a</assert><msgbox>m</msgbox>"
                      "<progress>p</progress><exit/>")
        << QStringList{"configuration c", "assertion a", "messageBox m", "progress p", "exit "}
        << QByteArray();
    QTest::newRow("order within a kind")
        << QByteArray("<progress>1</progress> <progress>2</progress>\n<progress>3</progress>")
        << QStringList{"progress 1", "progress 2", "progress 3"} << QByteArray();
    QTest::newRow("exit drops what stood in front") << QByteArray("<progress>half<exit/><exit/>rest")
                                                    << QStringList{"exit ", "exit "} << QByteArray("rest");
    QTest::newRow("empty payload") << QByteArray("<progress></progress>") << QStringList{"progress "}
                                   << QByteArray();
    QTest::newRow("first opening tag counts") << QByteArray("<progress>a<progress>b</progress>")
                                              << QStringList{"progress a<progress>b"} << QByteArray();
    QTest::newRow("payload of other tags") << QByteArray("<progress><b>&amp;</b></progress>")
                                           << QStringList{"progress <b>&amp;</b>"} << QByteArray();
    QTest::newRow("letter case") << QByteArray("<Progress>a</progress>") << QStringList() << QByteArray();
    QTest::newRow("unknown tags") << QByteArray("<other>a</other>") << QStringList()
                                  << QByteArray("<other>a</other>");
    QTest::newRow("stray closing tag")
        << QByteArray("x</progress><progress>a</progress>") << QStringList{"progress a"} << QByteArray();
    QTest::newRow("opening tag behind the closing tag")
        << QByteArray("</progress><progress>rest") << QStringList() << QByteArray("<progress>rest");
    QTest::newRow("stray closing tag of an earlier kind")
        << QByteArray("<progress>a</progress></assert><progress>b</progress>") << QStringList{"progress b"}
        << QByteArray();
    QTest::newRow("opening tags may not overlap closing tags")
        << QByteArray("<progress</progress>") << QStringList() << QByteArray();
}

void messageBufferTest::cuts()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, messages);
    QFETCH(QByteArray, rest);

    messageBuffer buffer;
    buffer.append(text);
    QCOMPARE(cutAll(buffer), messages);
    QCOMPARE(buffer.waiting(), rest.size());
    // Whatever waits must not spoil what comes next.
    buffer.append("</msgbox><msgbox>next</msgbox>");
    QCOMPARE(cutAll(buffer), QStringList{"messageBox next"});
}

void messageBufferTest::joinsPieces_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 3, 7, 11, 12})
        QTest::addRow("%d bytes", size) << size;
}

void messageBufferTest::joinsPieces()
{
    QFETCH(int, size);
    const QByteArray text("junk<assert>if (a < b)</assert></assert><progress>create:0;\xe4\xff</progress>"
                          "<configuration>windowModal=on</configuration><exit/><progress>half</prog");
    messageBuffer buffer;
    QStringList messages;
    for (qsizetype at = 0; at < text.size(); at += size) {
        buffer.append(text.mid(at, size));
        messages << cutAll(buffer);
    }
    const QStringList expected{"assertion if (a < b)", QStringLiteral("progress create:0;\u00e4\u00ff"),
                               "configuration windowModal=on", "exit "};
    QCOMPARE(messages, expected);
    buffer.append("ress>");
    QCOMPARE(cutAll(buffer), QStringList{"progress half"});
    QCOMPARE(buffer.waiting(), 0);
}

void messageBufferTest::clearForgetsTheText()
{
    messageBuffer buffer;
    buffer.append("<progress>a</prog");
    QVERIFY(!buffer.next());
    buffer.clear();
    buffer.append("ress><progress>b</progress>");
    QCOMPARE(cutAll(buffer), QStringList{"progress b"});
}

// The sizes of the next two make any work that grows with their square run into the test's time limit.

void messageBufferTest::costIsLinearInBytes()
{
    constexpr qsizetype size = 8'000'000;
    messageBuffer buffer;
    buffer.append("<progress>");
    const QByteArray byte("<");
    for (qsizetype i = 0; i < size; ++i) {
        buffer.append(byte);
        QVERIFY(!buffer.next());
    }
    buffer.append("</progress>");
    const auto received = buffer.next();
    QVERIFY(received);
    QCOMPARE(received->payload.size(), size);
}

void messageBufferTest::costIsLinearInMessages()
{
    constexpr int count = 1'000'000;
    messageBuffer buffer;
    buffer.append(QByteArray("<progress>update:0;1</progress>").repeated(count) + "<progress>");
    int cut = 0;
    while (buffer.next())
        ++cut;
    QCOMPARE(cut, count);
    QCOMPARE(buffer.waiting(), qsizetype(sizeof "<progress>" - 1));
}

QTEST_APPLESS_MAIN(messageBufferTest)
#include "messageBufferTest.moc"
