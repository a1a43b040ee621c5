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
    void joinsPieces();
    void clearForgetsTheText();
    void costIsLinear();
};

void messageBufferTest::cuts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<int>("waiting"); // bytes
    const auto row = [](const char *name, const char *text, const QStringList &messages, int waiting = 0) {
        QTest::newRow(name) << QByteArray(text) << messages << waiting;
    };
    row("each kind, in the order of kinds",
        "<progress>p</progress><msgbox>m</msgbox><assert>a</assert><configuration>c</configuration>",
        {"configuration c"});
    row("kinds that arrive in their order",
        "<configuration>c</configuration><assert>a</assert><msgbox>m</msgbox><progress>p</progress><exit/>",
        {"configuration c", "assertion a", "messageBox m", "progress p", "exit "});
    row("order within a kind", "<progress>1</progress> <progress>2</progress>\n<progress>3</progress>",
        {"progress 1", "progress 2", "progress 3"});
    row("exit drops what stood in front", "<progress>half<exit/><exit/>rest", {"exit ", "exit "}, 4);
    row("empty payload", "<progress></progress>", {"progress "});
    row("first opening tag counts", "<progress>a<progress>b</progress>", {"progress a<progress>b"});
    row("letter case", "<Progress>a</progress>", {});
    row("unknown tags", "<other>a</other>", {}, 16);
    row("stray closing tag", "x</progress><progress>a</progress>", {"progress a"});
    row("opening tag behind the closing tag", "</progress><progress>rest", {}, 14);
    row("stray closing tag of an earlier kind", "<progress>a</progress></assert><progress>b</progress>",
        {"progress b"});
    row("opening tags may not overlap closing tags", "<progress</progress>", {});
}

void messageBufferTest::cuts()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, messages);

    messageBuffer buffer;
    buffer.append(text);
    QCOMPARE(cutAll(buffer), messages);
    QTEST(int(buffer.waiting()), "waiting");
    // Whatever waits must not spoil what comes next.
    buffer.append("</msgbox><msgbox>next</msgbox>");
    QCOMPARE(cutAll(buffer), QStringList{"messageBox next"});
}

void messageBufferTest::joinsPieces()
{
    const QByteArray text("junk<assert>if (a < b)</assert></assert><progress>create:0;\xe4\xff</progress>"
                          "<configuration>windowModal=on</configuration><exit/><progress>half</prog");
    for (const int size : {1, 2, 3, 7, 11, 12}) {
        messageBuffer buffer;
        QStringList messages;
        for (qsizetype at = 0; at < text.size(); at += size) {
            buffer.append(text.mid(at, size));
            messages << cutAll(buffer);
        }
        buffer.append("ress>");
        messages << cutAll(buffer);
        const QStringList expected{"assertion if (a < b)", "progress create:0;\u00e4\u00ff",
                                   "configuration windowModal=on", "exit ", "progress half"};
        QCOMPARE(messages, expected);
    }
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

/// The sizes make any work that grows with their square run into the test's time limit.
void messageBufferTest::costIsLinear()
{
    constexpr int messages = 1'000'000;
    constexpr qsizetype bytes = 8'000'000;
    messageBuffer buffer;
    buffer.append(QByteArray("<progress>update:0;1</progress>").repeated(messages) + "<progress>");
    int cut = 0;
    while (buffer.next())
        ++cut;
    QCOMPARE(cut, messages);
    const QByteArray byte("<");
    for (qsizetype i = 0; i < bytes; ++i) {
        buffer.append(byte);
        QVERIFY(!buffer.next());
    }
    buffer.append("</progress>");
    QCOMPARE(buffer.next()->payload.size(), bytes);
}

QTEST_APPLESS_MAIN(messageBufferTest)
#include "messageBufferTest.moc"
