#include "client/protocolText.h"

#include <QTest>

using error = progressClient::error;
using heard = progressClient::event;

/// What the client library sends and reads, as plain text.
class protocolTextTest : public QObject
{
    Q_OBJECT

private slots:
    void convertsToLatin1();
    void refusesWhatCannotBeCarried();
    void writesBoxes();
    void readsEvents();
    void takesEventsOffTheFront();
};

void protocolTextTest::convertsToLatin1()
{
    const std::pair<const char *, const char *> texts[] = {
        {"K\xC3\xA4se~ \xC3\xBF", "K\xE4se~ \xFF"},
        {"\xC4\x80", "?"}, // the first one beyond
        {"5 \xE2\x82\xAC!", "5 ?!"},
        {"\xF0\x9F\x98\x80.", "?."},
        {"K\xE4se", "K\xE4se"}, // Latin-1 already
        {"x\xC3", "x\xC3"},
        {"\xC0\xAF", "\xC0\xAF"}, // an overlong slash
        {"\xA4", "\xA4"},
    };
    for (const auto &[utf8, latin1] : texts)
        QCOMPARE(latin1FromUtf8(utf8), std::string(latin1));
}

void protocolTextTest::refusesWhatCannotBeCarried()
{
    QCOMPARE(carried("a text", "50 < 60 > 40 <b>x</b>", ";"), std::string("50 < 60 > 40 <b>x</b>"));
    QCOMPARE(carried("a text", "a;b", "[#]"), std::string("a;b"));
    QCOMPARE(carried("a text", "a;b"), std::string("a;b"));
    const std::pair<std::string, const char *> refused[] = {
        {"a;b", ";"},         {"a[#]b", "[#]"},  {std::string("a\0b", 3), ""},
        {"x</progress>", ""}, {"<msgbox>x", ""}, {"<exit/>", ""}};
    for (const auto &[text, separator] : refused)
        QVERIFY_THROWS_EXCEPTION(error, carried("a text", text, separator));
}

void protocolTextTest::writesBoxes()
{
    using button = progressClient::button;
    const auto warning = progressClient::icon::warning;
    QCOMPARE(boxPayload({"Copy", "Go on?", {button::yes, button::no}, warning, button::no}),
             std::string("2[#]Copy[#]Go on?[#]16384[#]65792"));
    QCOMPARE(boxPayload({"", "", {button::ok}, progressClient::icon::none, {}}),
             std::string("0[#][#][#]1024"));
    const progressClient::question refused[] = {
        {"a", "b", {}, warning, {}},
        {"a", "b", std::vector<button>(11, button::ok), warning, {}},
        {"a", "b", {button::ok}, warning, button::no},
        {"a[#]", "b", {button::ok}, warning, {}},
    };
    for (const auto &box : refused)
        QVERIFY_THROWS_EXCEPTION(error, boxPayload(box));
}

void protocolTextTest::readsEvents()
{
    using kind = heard::kind;
    struct {
        const char *text;
        kind what;
        int slot = -1;
        int percent = -1;
        int seconds = -1;
    } const events[] = {
        {"isShown", kind::isShown},
        {"isHidden", kind::isHidden},
        {"isActivated", kind::isActivated},
        {"shutDown", kind::shutDown},
        {"clicked:3", kind::clicked, 3},
        {"totalProgress=42|97", kind::totalProgress, -1, 42, 97},
        {"totalProgress=-1|-1", kind::totalProgress},
        {"totalProgress=42", kind::other},
        {"clicked:", kind::other},
        {"clicked:3x", kind::other},
        {"isNew", kind::other},
    };
    for (const auto &each : events) {
        const heard read = eventFromText(each.text);
        QCOMPARE(read.text, std::string(each.text));
        QVERIFY2(read.what == each.what && read.slot == each.slot, each.text);
        QVERIFY2(read.percent == each.percent && read.remainingSeconds == each.seconds, each.text);
    }
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
