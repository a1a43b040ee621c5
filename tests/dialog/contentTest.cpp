#include "tests/dialog/dialogUnderTest.h"

#include <QTest>

#include <limits>

/// What the slots show after which commands, and what a copy takes over.
class contentTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetSettings(); }
    void shows_data();
    void shows();
    void hasNoOtherSlots_data();
    void hasNoOtherSlots();
    void looks();
    void copyShowsTheSame_data();
    void copyShowsTheSame();
    void copyGoesOnWithTheRun();
    void closeRequestOnlyHides();
};

void contentTest::shows_data()
{
    QTest::addColumn<QString>("commands");
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("events");
    const auto row = [](const char *name, const char *commands, const char *content, const char *events) {
        QTest::newRow(name) << commands << content << events;
    };
    row("nothing", "remove:0 delText:9 delButt:3 updateText:0;x", "", "totalProgress=0|-1");
    row("bar", "create:0;Copying", "0:Copying %p% 0", "isShown totalProgress=0|-1");
    row("bar without caption", "create:0;", "0: %p% 0", "isShown totalProgress=0|-1");
    row("text", "addText:3;a", "3:a", "isShown totalProgress=0|-1");
    row("button", "addButt:9;Stop", "[9:Stop]", "isShown");
    row("bar under a text", "addText:0;a create:0;b", "0:b", "isShown totalProgress=0|-1");
    row("text over a bar", "create:0;a update:0;5 addText:0;b", "0:b",
        "isShown totalProgress=0|-1 totalProgress=5|-1");
    row("both go together", "create:0;a addText:0;b remove:0", "", "isShown totalProgress=0|-1 isHidden");
    row("bar text waits for a layout", "create:0;a updateText:0;b", "0:a %p% 0",
        "isShown totalProgress=0|-1");
    row("and then shows", "create:0;a updateText:0;b addButt:0;x", "0:b %p% 0 [0:x]",
        "isShown totalProgress=0|-1");
    row("text line shows at once", "addText:0;a updateText:0;b", "0:b", "isShown totalProgress=0|-1");
    row("bar restarts", "create:0;a update:0;60 create:0;b", "0:b %p% 0",
        "isShown totalProgress=0|-1 totalProgress=60|-1 totalProgress=0|-1");
    row("given up", "create:0;a update:0;-1", "0:a %p% 100",
        "isShown totalProgress=0|-1 totalProgress=100|-1");
    row("out of range", "create:0;a update:0;7 update:0;101 update:0;-2", "0:a %p% 7",
        "isShown totalProgress=0|-1 totalProgress=7|-1");
    row("hidden bars do not count", "create:0;a create:1;b update:1;50 remove:1 create:1;c",
        "0:a %p% 0 1:c %p% 0", "isShown totalProgress=0|-1 totalProgress=25|-1 totalProgress=0|-1");
    row("button again", "addButt:0;a addButt:0;b", "[0:b]", "isShown");
    row("shown until the last is gone", "addText:0;a addButt:0;b create:1;c delButt:0 remove:1 delText:0", "",
        "isShown totalProgress=0|-1 isHidden");
    row("shown again", "addButt:0;a delButt:0 addButt:1;b", "[1:b]", "isShown isHidden isShown");
}

void contentTest::shows()
{
    QFETCH(QString, commands);
    QFETCH(QString, content);
    dialogUnderTest dialog;
    eventListener listener;
    dialog.run(commands);
    QCOMPARE(dialog.content(), content);
    QCOMPARE(dialog.isVisible(), !content.isEmpty());
    QTEST(listener.events(), "events");
}

void contentTest::hasNoOtherSlots_data()
{
    QTest::addColumn<int>("screenHeight");
    QTest::addColumn<int>("id");
    QTest::addColumn<bool>("button");
    for (const int id : {-1, 10, 11, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", id) << 480 << id << true;
    QTest::newRow("slot 5 of a low screen") << 200 << 5 << false;
    QTest::newRow("button 2 of a low screen") << 200 << 2 << true;
}

void contentTest::hasNoOtherSlots()
{
    QFETCH(int, screenHeight);
    QFETCH(int, id);
    QFETCH(bool, button);
    receiver::m_desktopHeight = screenHeight;
    dialogUnderTest dialog;
    dialog.run("create:0;a update:0;9 addText:1;b addButt:0;c");
    const QString before = dialog.content();
    if (button) {
        dialog.addButton(id, "x");
        dialog.removeButton(id);
    }
    if (id != 2) {
        dialog.createBar(id, "x");
        dialog.updateBar(id, 50);
        QCOMPARE(dialog.createText(id, "x"), id);
        dialog.updateText(id, "x");
        dialog.removeBar(id);
        dialog.removeText(id);
    }
    QCOMPARE(dialog.content(), before);
}

void contentTest::looks()
{
    receiver::m_labelFont = QFont("Sans", 7);
    receiver::m_barLabelFont = QFont("Serif", 11);
    receiver::m_buttonFont = QFont("Monospace", 6);
    receiver::m_barColor = Qt::red;
    receiver::m_windowTitle = "Job";
    dialogUnderTest dialog;
    receiver::m_barColor = Qt::green; // is for the next dialog
    dialog.run("create:0;a addText:1;<b>b</b> addButt:0;c");
    QCOMPARE(dialog.windowTitle(), "Job");
    QCOMPARE(dialog.labels()[1]->font(), QFont("Sans", 7));
    QCOMPARE(dialog.bars()[0]->font(), QFont("Serif", 11));
    QCOMPARE(dialog.bars()[5]->font(), receiver::m_barNumFont);
    QCOMPARE(dialog.buttons()[0]->font(), QFont("Monospace", 6));
    QCOMPARE(dialog.bars()[0]->palette().color(QPalette::Highlight), QColor(Qt::red));
    QCOMPARE(dialog.totalBar()->palette().color(QPalette::Highlight), QColor(Qt::red));
    QCOMPARE(dialog.totalBar()->format(), "total progress %p% ");
    receiver::m_barColor = QColor();
    receiver::m_windowTitle = "unknown";
}

void contentTest::copyShowsTheSame_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QString>("content");
    QTest::addColumn<QRect>("geometry");
    const QString low("0:a %p% 7 4:b [1:c]");
    const QString all = QString(low).replace(" [1:c]", " 5:d %p% 8 [1:c] [9:e]");
    QTest::newRow("normal") << 480 << 480 << all << QRect(152, 40, 336, 400);
    QTest::newRow("low") << 200 << 200 << low << QRect(75, 5, 490, 190);
    QTest::newRow("normal to low") << 480 << 200 << low << QRect(75, 5, 490, 190);
    QTest::newRow("low to normal") << 200 << 480 << low << QRect(152, 40, 336, 400);
}

void contentTest::copyShowsTheSame()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QString, content);
    receiver::m_desktopHeight = from;
    receiver::m_barColor = Qt::red;
    dialogUnderTest source;
    receiver::m_barColor = Qt::green;
    source.run("create:0;a addText:4;b create:5;d update:0;7 update:5;8 addButt:1;c addButt:9;e");

    receiver::m_desktopHeight = to;
    eventListener listener;
    dialogUnderTest copy;
    copy.copyFromDialog(source);
    QCOMPARE(copy.content(), content);
    QVERIFY(!copy.isVisible());
    QCOMPARE(copy.bars()[0]->palette().color(QPalette::Highlight), QColor(Qt::red));
    QCOMPARE(copy.totalBar()->isHidden(), false);
    // Placed, but without telling anybody; centred by its own measures.
    QVERIFY(!listener.events().contains("is"));
    receiver::m_desktopWidth = 1;
    copy.movePosition();
    QTEST(copy.geometry(), "geometry");
    for (const QWidget *child : {static_cast<QWidget *>(copy.bars()[0]), copy.labels()[4],
                                 static_cast<QWidget *>(copy.buttons()[1])})
        QVERIFY(copy.rect().contains(child->pos()) && child->height() > 20);

    // A click on the copy's button is one event.
    copy.buttons()[1]->click();
    QCOMPARE(listener.events(), "clicked:1");
    copy.run("remove:0 remove:4 remove:5 delButt:1 delButt:9");
    QVERIFY(listener.events().contains("isHidden"));
    receiver::m_barColor = QColor();
}

void contentTest::copyGoesOnWithTheRun()
{
    dialogUnderTest source;
    source.run("create:0;a addButt:0;b");
    dialogUnderTest copy;
    copy.copyFromDialog(source);
    eventListener listener;
    // The run is still the same: more content is no new one, and its average is known.
    copy.run("create:1;c update:1;50");
    QCOMPARE(listener.events(), "totalProgress=25|-1");
    dialogUnderTest copyOfNothing;
    copyOfNothing.copyFromDialog(CProgressDialog());
    copyOfNothing.run("create:0;a");
    QVERIFY(listener.events().startsWith("isShown"));
}

void contentTest::closeRequestOnlyHides()
{
    dialogUnderTest dialog;
    eventListener listener;
    dialog.run("create:0;a");
    listener.events();
    QVERIFY(dialog.close());
    QVERIFY(!dialog.isVisible());
    dialog.run("create:1;b");
    QCOMPARE(listener.events(), "");
    QCOMPARE(dialog.content(), "0:a %p% 0 1:b %p% 0");
}

QTEST_MAIN(contentTest)
#include "contentTest.moc"
