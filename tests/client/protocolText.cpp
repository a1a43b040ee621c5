#include "client/protocolText.h"

#include <QTest>

using error = progressClient::error;
using heard = progressClient::event;

/// What the client library sends and reads, as plain text.
class protocolTextTest : public QObject
{
    Q_OBJECT

private slots:
    void convertsToLatin1_data();
    void convertsToLatin1();
    void refusesWhatCannotBeCarried_data();
    void refusesWhatCannotBeCarried();
    void writesBoxes_data();
    void writesBoxes();
    void readsEvents_data();
    void readsEvents();
    void takesEventsOffTheFront();
};

void protocolTextTest::convertsToLatin1_data()
{
    QTest::addColumn<QByteArray>("utf8");
    QTest::addColumn<QByteArray>("latin1");
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("ascii") << QByteArray("a~") << QByteArray("a~");
    QTest::newRow("two bytes") << QByteArray("K\xC3\xA4se \xC3\xBF") << QByteArray("K\xE4se \xFF");
    QTest::newRow("first beyond") << QByteArray("\xC4\x80") << QByteArray("?");
    QTest::newRow("three bytes") << QByteArray("5 \xE2\x82\xAC!") << QByteArray("5 ?!");
    QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x98\x80.") << QByteArray("?.");
    QTest::newRow("latin 1 already") << QByteArray("K\xE4se") << QByteArray("K\xE4se");
    QTest::newRow("cut at the end") << QByteArray("x\xC3") << QByteArray("x\xC3");
    QTest::newRow("overlong slash") << QByteArray("\xC0\xAF") << QByteArray("\xC0\xAF");
    QTest::newRow("stray continuation") << QByteArray("\xA4") << QByteArray("\xA4");
}

void protocolTextTest::convertsToLatin1()
{
    QFETCH(QByteArray, utf8);
    QFETCH(QByteArray, latin1);
    QCOMPARE(QByteArray::fromStdString(latin1FromUtf8(utf8.toStdString())), latin1);
}

void protocolTextTest::refusesWhatCannotBeCarried_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("separator");
    QTest::addColumn<bool>("isCarried");
    const QByteArray zero("a\0b", 3);
    QTest::newRow("plain") << QByteArray("50 < 60 > 40") << QByteArray(";") << true;
    QTest::newRow("separator") << QByteArray("a;b") << QByteArray(";") << false;
    QTest::newRow("separator elsewhere") << QByteArray("a;b") << QByteArray("[#]") << true;
    QTest::newRow("long separator") << QByteArray("a[#]b") << QByteArray("[#]") << false;
    QTest::newRow("no separator") << QByteArray("a;b") << QByteArray() << true;
    QTest::newRow("zero byte") << zero << QByteArray() << false;
    QTest::newRow("closing tag") << QByteArray("x</progress>") << QByteArray() << false;
    QTest::newRow("opening tag") << QByteArray("<msgbox>x") << QByteArray() << false;
    QTest::newRow("exit") << QByteArray("<exit/>") << QByteArray() << false;
    QTest::newRow("html") << QByteArray("<b>x</b>") << QByteArray() << true;
}

void protocolTextTest::refusesWhatCannotBeCarried()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, separator);
    QFETCH(bool, isCarried);
    try {
        carried("a text", text.toStdString(), separator.toStdString());
        QVERIFY(isCarried);
    } catch (const error &problem) {
        QVERIFY(!isCarried);
        QCOMPARE(problem.why(), error::reason::badArgument);
    }
}

void protocolTextTest::writesBoxes_data()
{
    using button = progressClient::button;
    QTest::addColumn<progressClient::question>("box");
    QTest::addColumn<QByteArray>("payload");
    const std::vector<button> eleven(11, button::ok);
    const auto warning = progressClient::icon::warning;
    QTest::newRow("preset")
        << progressClient::question{"Copy", "Go on?", warning, {button::yes, button::no}, button::no}
        << QByteArray("2[#]Copy[#]Go on?[#]16384[#]65792");
    QTest::newRow("empty texts")
        << progressClient::question{"", "", progressClient::icon::none, {button::ok}, {}}
        << QByteArray("0[#][#][#]1024");
    QTest::newRow("no button") << progressClient::question{"a", "b", warning, {}, {}} << QByteArray();
    QTest::newRow("eleven buttons") << progressClient::question{"a", "b", warning, eleven, {}}
                                    << QByteArray();
    QTest::newRow("preset elsewhere")
        << progressClient::question{"a", "b", warning, {button::ok}, button::no} << QByteArray();
    QTest::newRow("separator") << progressClient::question{"a[#]", "b", warning, {button::ok}, {}}
                               << QByteArray();
}

/// An empty payload stands for a refusal.
void protocolTextTest::writesBoxes()
{
    QFETCH(progressClient::question, box);
    QFETCH(QByteArray, payload);
    if (payload.isEmpty())
        QVERIFY_THROWS_EXCEPTION(error, boxPayload(box));
    else
        QCOMPARE(QByteArray::fromStdString(boxPayload(box)), payload);
}

void protocolTextTest::readsEvents_data()
{
    using kind = heard::kind;
    QTest::addColumn<std::string>("text");
    QTest::addColumn<heard::kind>("what");
    QTest::addColumn<int>("slot");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("seconds");
    QTest::newRow("shown") << std::string("isShown") << kind::isShown << -1 << -1 << -1;
    QTest::newRow("hidden") << std::string("isHidden") << kind::isHidden << -1 << -1 << -1;
    QTest::newRow("activated") << std::string("isActivated") << kind::isActivated << -1 << -1 << -1;
    QTest::newRow("shut down") << std::string("shutDown") << kind::shutDown << -1 << -1 << -1;
    QTest::newRow("clicked") << std::string("clicked:3") << kind::clicked << 3 << -1 << -1;
    QTest::newRow("total") << std::string("totalProgress=42|97") << kind::totalProgress << -1 << 42 << 97;
    QTest::newRow("total unknown") << std::string("totalProgress=-1|-1") << kind::totalProgress << -1 << -1
                                   << -1;
    QTest::newRow("half a total") << std::string("totalProgress=42") << kind::other << -1 << -1 << -1;
    QTest::newRow("no slot") << std::string("clicked:") << kind::other << -1 << -1 << -1;
    QTest::newRow("slot and more") << std::string("clicked:3x") << kind::other << -1 << -1 << -1;
    QTest::newRow("unknown") << std::string("isNew") << kind::other << -1 << -1 << -1;
}

void protocolTextTest::readsEvents()
{
    QFETCH(std::string, text);
    QFETCH(heard::kind, what);
    const heard read = eventFromText(text);
    QCOMPARE(read.what, what);
    QCOMPARE(read.text, text);
    QTEST(read.slot, "slot");
    QTEST(read.percent, "percent");
    QTEST(read.remainingSeconds, "seconds");
}

void protocolTextTest::takesEventsOffTheFront()
{
    std::string buffer = "isShown</event>noise<event>clicked:1</event><event>is";
    QCOMPARE(takeEvent(buffer)->what, heard::kind::isShown);
    QCOMPARE(takeEvent(buffer)->slot, 1);
    QVERIFY(!takeEvent(buffer));
    buffer += "Hidden</event>";
    QCOMPARE(takeEvent(buffer)->what, heard::kind::isHidden);
    QVERIFY(buffer.empty());
}

QTEST_APPLESS_MAIN(protocolTextTest)
#include "protocolText.moc"
