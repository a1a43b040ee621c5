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
    void hasNoOtherSlots();
    void looks();
    void copyShowsTheSame_data();
    void copyShowsTheSame();
    void copyGoesOnWithTheRun();
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
    row("bar under a text", "addText:0;a create:0;b", "0:b", "isShown totalProgress=0|-1");
    row("text over a bar", "create:0;a update:0;5 addText:0;b", "0:b",
        "isShown totalProgress=0|-1 totalProgress=5|-1");
    row("both go together", "create:0;a addText:0;b remove:0", "", "isShown totalProgress=0|-1 isHidden");
    row("bar text waits for a layout", "create:0;a updateText:0;b", "0:a %p% 0",
        "isShown totalProgress=0|-1");
    row("and then shows", "create:0;a updateText:0;b addButt:0;x", "0:b %p% 0 [0:x]",
        "isShown totalProgress=0|-1");
    row("bar restarts", "create:0;a update:0;60 create:0;b", "0:b %p% 0",
        "isShown totalProgress=0|-1 totalProgress=60|-1 totalProgress=0|-1");
    row("given up", "create:0;a update:0;-1", "0:a %p% 100",
        "isShown totalProgress=0|-1 totalProgress=100|-1");
    row("out of range", "create:0;a update:0;7 update:0;101 update:0;-2", "0:a %p% 7",
        "isShown totalProgress=0|-1 totalProgress=7|-1");
    row("hidden bars do not count", "create:0;a create:1;b update:1;50 remove:1 create:1;c",
        "0:a %p% 0 1:c %p% 0", "isShown totalProgress=0|-1 totalProgress=25|-1 totalProgress=0|-1");
    row("shown until the last is gone", "addText:0;a addButt:0;b create:1;c delButt:0 remove:1 delText:0", "",
        "isShown totalProgress=0|-1 isHidden");
    row("shown again", "addButt:0;a delButt:0 addButt:1;b", "[1:b]", "isShown isHidden isShown");
}

void contentTest::shows()
{
    QFETCH(QString, commands);
    QFETCH(QString, content);
    dialogUnderTest dialog;
    dialog.run(commands);
    QCOMPARE(dialog.content(), content);
    QCOMPARE(dialog.isVisible(), !content.isEmpty());
    QTEST(dialog.events(), "events");
}

void contentTest::hasNoOtherSlots()
{
    const QString shown("create:0;a update:0;9 addText:1;b addButt:0;c");
    const QString everything("remove:%1 delText:%1 delButt:%1 updateText:%1;x create:%1;x update:%1;50 "
                             "addText:%1;x addButt:%1;x");
    dialogUnderTest dialog;
    dialog.run(shown);
    for (const int id : {-1, 10, 11, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        dialog.run(everything.arg(id));
        QCOMPARE(dialog.createText(id, "x"), id);
    }
    QCOMPARE(dialog.content(), "0:a %p% 9 1:b [0:c]");

    appearance.m_desktopHeight = 200;
    dialogUnderTest lowDialog;
    lowDialog.run(shown + " addButt:2;x " + everything.arg(5) + ' ' + everything.arg(9));
    QCOMPARE(lowDialog.content(), dialog.content());
}

void contentTest::looks()
{
    appearance.m_labelFont = QFont("Sans", 7);
    appearance.m_barLabelFont = QFont("Serif", 11);
    appearance.m_buttonFont = QFont("Monospace", 6);
    appearance.m_barColor = Qt::red;
    appearance.m_windowTitle = "Job";
    dialogUnderTest dialog;
    appearance.m_barColor = Qt::green; // is for the next dialog
    dialog.run("create:0;a addText:1;b addButt:0;c");
    QCOMPARE(dialog.windowTitle(), "Job");
    QCOMPARE(dialog.labels()[1]->textFormat(), Qt::PlainText);
    QCOMPARE(dialog.labels()[1]->font(), QFont("Sans", 7));
    QCOMPARE(dialog.bars()[0]->font(), QFont("Serif", 11));
    QCOMPARE(dialog.bars()[5]->font(), appearance.m_barNumFont);
    QCOMPARE(dialog.buttons()[0]->font(), QFont("Monospace", 6));
    QCOMPARE(dialog.bars()[0]->palette().color(QPalette::Highlight), QColor(Qt::red));
    QCOMPARE(dialog.totalBar()->palette().color(QPalette::Highlight), QColor(Qt::red));
    QCOMPARE(dialog.totalBar()->format(), "total progress %p% ");
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
    QTest::newRow("normal to low") << 480 << 200 << low << QRect(75, 5, 490, 190);
    QTest::newRow("low to normal") << 200 << 480 << low << QRect(152, 40, 336, 400);
}

void contentTest::copyShowsTheSame()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QString, content);
    appearance.m_desktopHeight = from;
    appearance.m_barColor = Qt::red;
    dialogUnderTest source;
    appearance.m_barColor = Qt::green;
    source.run("create:0;a addText:4;b create:5;d update:0;7 update:5;8 addButt:1;c addButt:9;e");

    appearance.m_desktopHeight = to;
    dialogUnderTest copy;
    copy.copyFromDialog(source);
    QCOMPARE(copy.content(), content);
    QCOMPARE(copy.bars()[0]->palette().color(QPalette::Highlight), QColor(Qt::red));
    // Placed, but not shown, and without telling anybody; centred by its own measures.
    QVERIFY(!copy.isVisible());
    QVERIFY(!copy.events().contains("is"));
    appearance.m_desktopWidth = 1;
    copy.movePosition();
    QTEST(copy.geometry(), "geometry");
    for (const QWidget *child :
         std::initializer_list<const QWidget *>{copy.bars()[0], copy.labels()[4], copy.buttons()[1]})
        QVERIFY(copy.rect().contains(child->pos()) && child->height() > 20);

    copy.buttons()[1]->click();
    QCOMPARE(copy.events(), "clicked:1");
    copy.run("remove:0 remove:4 remove:5 delButt:1 delButt:9");
    QVERIFY(copy.events().contains("isHidden"));
}

void contentTest::copyGoesOnWithTheRun()
{
    dialogUnderTest source;
    source.run("create:0;a addButt:0;b");
    dialogUnderTest copy;
    copy.copyFromDialog(source);
    // The run is still the same: more content is no new one, and its average is known.
    copy.run("create:1;c update:1;50");
    QCOMPARE(copy.events(), "totalProgress=25|-1");

    // Even if the copy has no slot for the content, it does not end the run.
    source.run("create:5;a remove:0 delButt:0");
    appearance.m_desktopHeight = 200;
    dialogUnderTest lowCopy;
    copy.events();
    lowCopy.copyFromDialog(source);
    QCOMPARE(lowCopy.content(), "");
    QCOMPARE(copy.events(), "");
}

QTEST_MAIN(contentTest)
#include "contentTest.moc"
