#include "server/messageBuffer.h"

#include <QRandomGenerator>
#include <QTest>

namespace
{

QString told(messageKind kind, QByteArrayView payload)
{
    return QString::number(static_cast<int>(kind)) + ' ' + QString::fromLatin1(payload);
}

/// The plainest way: the first complete message of the first kind that has one, again and again.
QStringList cutPlainly(QByteArray &text)
{
    QStringList cut;
    for (size_t kind = 0; kind < portKinds;) {
        const QByteArrayView opening = allTags[kind].opening;
        const QByteArrayView closing = allTags[kind].closing;
        const qsizetype end = text.indexOf(closing.isEmpty() ? opening : closing);
        if (end < 0) {
            ++kind;
            continue;
        }
        const qsizetype start = text.indexOf(opening) + opening.size();
        if (closing.isEmpty())
            cut << told(allTags[kind].kind, {});
        else if (start >= opening.size() && start <= end)
            cut << told(allTags[kind].kind, text.mid(start, end - start));
        text.remove(0, end + (closing.isEmpty() ? opening : closing).size());
        kind = 0;
    }
    return cut;
}

QStringList cutAll(messageBuffer &buffer)
{
    QStringList cut;
    while (const auto received = buffer.next())
        cut << told(received->kind, received->payload);
    return cut;
}

} // namespace

class messageBufferTest : public QObject
{
    Q_OBJECT

private slots:
    void cutsAsThePlainestWay();
    void costIsLinear();
};

void messageBufferTest::cutsAsThePlainestWay()
{
    const QByteArrayList pieces{"<progress>", "</progress>", "<configuration>", "</configuration>",
                                "<assert>",   "</assert>",   "<msgbox>",        "</msgbox>",
                                "<exit/>",    "<",           "</progres",       "a",
                                "<events/>",  "\xe4",        "create:0;x"};
    QRandomGenerator random(20240229);
    int messages = 0;
    for (int round = 0; round < 3000; ++round) {
        messageBuffer buffer;
        QByteArray plain;
        for (int i = 0; i < 20; ++i) {
            QByteArray text = pieces[random.bounded(int(pieces.size()))];
            const messageTags &tags = allTags[random.bounded(int(portKinds))];
            if (random.bounded(3) == 0)
                text = tags.opening.toByteArray() + text + tags.closing.toByteArray();
            if (random.bounded(8) == 0)
                text.truncate(random.bounded(int(text.size())));
            buffer.append(text);
            plain += text;
            // Mostly several pieces at a time.
            if (random.bounded(3) > 0)
                continue;
            const QStringList expected = cutPlainly(plain);
            messages += int(expected.size());
            QCOMPARE(cutAll(buffer), expected);
            QCOMPARE(buffer.waiting(), plain.size());
        }
        if (round % 5 == 0) {
            buffer.clear();
            buffer.append("ress><progress>b</progress>");
            QCOMPARE(cutAll(buffer), QStringList(told(messageKind::progress, "b")));
        }
    }
    QVERIFY(messages > 10'000);
}

/// The sizes make any work that grows with their square run into the test's time limit.
void messageBufferTest::costIsLinear()
{
    constexpr int messages = 300'000;
    constexpr qsizetype bytes = 3'000'000;
    messageBuffer buffer;
    buffer.append(QByteArray("<progress>update:0;1</progress>").repeated(messages) + "<progress>");
    int cut = 0;
    while (buffer.next())
        ++cut;
    QCOMPARE(cut, messages);
    for (qsizetype i = 0; i < bytes; ++i) {
        buffer.append("<");
        QVERIFY(!buffer.next());
    }
    buffer.append("</progress>");
    QCOMPARE(buffer.next()->payload.size(), bytes);
}

QTEST_APPLESS_MAIN(messageBufferTest)
#include "messageBufferTest.moc"
