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
    const auto row = [](const char *name, const char *utf8, const char *latin1) {
        QTest::newRow(name) << QByteArray(utf8) << QByteArray(latin1);
    };
    row("two bytes", "K\xC3\xA4se~ \xC3\xBF", "K\xE4se~ \xFF");
    row("first beyond", "\xC4\x80", "?");
    row("three bytes", "5 \xE2\x82\xAC!", "5 ?!");
    row("four bytes", "\xF0\x9F\x98\x80.", "?.");
    row("latin 1 already", "K\xE4se", "K\xE4se");
    row("cut at the end", "x\xC3", "x\xC3");
    row("overlong slash", "\xC0\xAF", "\xC0\xAF");
    row("stray continuation", "\xA4", "\xA4");
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
    const auto row = [](const QByteArray &text, const char *separator, bool isCarried) {
        QTest::addRow("%s, %s", text.constData(), separator) << text << QByteArray(separator) << isCarried;
    };
    row("50 < 60 > 40 <b>x</b>", ";", true);
    row("a;b", ";", false);
    row("a;b", "[#]", true);
    row("a[#]b", "[#]", false);
    row("a;b", "", true);
    row(QByteArray("a\0b", 3), "", false);
    row("x</progress>", "", false);
    row("<msgbox>x", "", false);
    row("<exit/>", "", false);
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
    using question = progressClient::question;
    QTest::addColumn<question>("box");
    QTest::addColumn<QByteArray>("payload");
    const auto row = [](const char *name, const question &box, const char *payload = "") {
        QTest::newRow(name) << box << QByteArray(payload);
    };
    const auto warning = progressClient::icon::warning;
    row("preset", {"Copy", "Go on?", warning, {button::yes, button::no}, button::no},
        "2[#]Copy[#]Go on?[#]16384[#]65792");
    row("empty texts", {"", "", progressClient::icon::none, {button::ok}, {}}, "0[#][#][#]1024");
    row("no button", {"a", "b", warning, {}, {}});
    row("eleven buttons", {"a", "b", warning, std::vector<button>(11, button::ok), {}});
    row("preset elsewhere", {"a", "b", warning, {button::ok}, button::no});
    row("separator", {"a[#]", "b", warning, {button::ok}, {}});
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
    QTest::addColumn<heard::kind>("what");
    QTest::addColumn<int>("slot");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("seconds");
    const auto row = [](const char *text, kind what, int slot = -1, int percent = -1, int seconds = -1) {
        QTest::newRow(text) << what << slot << percent << seconds;
    };
    row("isShown", kind::isShown);
    row("isHidden", kind::isHidden);
    row("isActivated", kind::isActivated);
    row("shutDown", kind::shutDown);
    row("clicked:3", kind::clicked, 3);
    row("totalProgress=42|97", kind::totalProgress, -1, 42, 97);
    row("totalProgress=-1|-1", kind::totalProgress);
    row("totalProgress=42", kind::other);
    row("clicked:", kind::other);
    row("clicked:3x", kind::other);
    row("isNew", kind::other);
}

void protocolTextTest::readsEvents()
{
    const heard read = eventFromText(QTest::currentDataTag());
    QCOMPARE(read.text, std::string(QTest::currentDataTag()));
    QTEST(read.what, "what");
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
#include "protocolTextTest.moc"
