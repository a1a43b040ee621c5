#include "tests/dialog/dialogUnderTest.h"

#include <QTest>

/// Where the dialog and its children are, in pixels.
class layoutTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetSettings(); }
    void windowSize_data();
    void windowSize();
    void rows_data();
    void rows();
    void totalBarAndHideButton();
    void buttons_data();
    void buttons();
    void followsTheSettingsOfItsConstruction();
};

void layoutTest::windowSize_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("default") << QSize(640, 480) << QRect(152, 40, 336, 400);
    QTest::newRow("lowest normal") << QSize(640, 280) << QRect(152, -60, 336, 400);
    QTest::newRow("highest low") << QSize(640, 279) << QRect(155, 44, 330, 190);
    QTest::newRow("half the width") << QSize(640, 241) << QRect(155, 25, 330, 190);
    QTest::newRow("three quarters of the width") << QSize(641, 240) << QRect(75, 25, 490, 190);
    // Divisions truncate toward zero.
    QTest::newRow("smaller than the dialog") << QSize(11, 281) << QRect(-5, -59, 21, 400);
}

void layoutTest::windowSize()
{
    QFETCH(QSize, screen);
    QFETCH(QRect, expected);
    appearance.m_desktopWidth = screen.width();
    appearance.m_desktopHeight = screen.height();
    dialogUnderTest dialog;
    QCOMPARE(dialog.geometry(), expected);
    appearance.m_paintOffsetX = 5;
    appearance.m_paintOffsetY = -7;
    dialog.movePosition();
    QCOMPARE(dialog.geometry(), expected.translated(5, -7));
}

void layoutTest::rows_data()
{
    QTest::addColumn<int>("screenHeight");
    QTest::addColumn<QString>("commands");
    QTest::addColumn<QList<int>>("tops"); // of the shown rows in slot order
    QTest::newRow("packed") << 480 << "create:7;a addText:9;b create:2;c" << QList<int>{19, 51, 83};
    QTest::newRow("closing a gap") << 480 << "addText:0;a create:1;b addText:2;c remove:1"
                                   << QList<int>{19, 51};
    QTest::newRow("low screen") << 279 << "create:0;a addText:4;b create:5;c" << QList<int>{17, 47};
}

void layoutTest::rows()
{
    QFETCH(int, screenHeight);
    QFETCH(QString, commands);
    QFETCH(QList<int>, tops);
    appearance.m_desktopHeight = screenHeight;
    dialogUnderTest dialog;
    dialog.run(commands);
    QList<QRect> shown;
    for (qsizetype i = 0; i < dialog.bars().size(); ++i) {
        for (const QWidget *widget :
             std::initializer_list<const QWidget *>{dialog.labels()[i], dialog.bars()[i]}) {
            if (widget->isVisible())
                shown << widget->geometry();
        }
    }
    QList<QRect> expected;
    for (const int top : tops)
        expected << QRect(screenHeight < 280 ? 8 : 11, top, 314, 26);
    QCOMPARE(shown, expected);
}

void layoutTest::totalBarAndHideButton()
{
    appearance.m_busyXpos = 5; // half a position is none
    dialogUnderTest dialog;
    dialog.run("addText:0;a");
    QVERIFY(!dialog.hideButton()->isVisible());
    QCOMPARE(dialog.totalBar()->geometry(), QRect(11, 307, 308, 26));

    appearance.m_busyYpos = 0;
    dialog.run("addText:0;a");
    QVERIFY(dialog.hideButton()->isVisible());
    const int width = dialog.hideButton()->sizeHint().width();
    QCOMPARE(dialog.totalBar()->geometry(), QRect(11, 307, 308 - width, 26));
    QCOMPARE(dialog.hideButton()->geometry(), QRect(328 - width, 303, width, 34));

    appearance.m_desktopHeight = 279;
    dialogUnderTest lowDialog;
    lowDialog.run("addText:0;a");
    QCOMPARE(lowDialog.totalBar()->geometry(), QRect(8, 132, 308 - width, 26));
    QCOMPARE(lowDialog.hideButton()->geometry(), QRect(325 - width, 128, width, 34));
}

void layoutTest::buttons_data()
{
    QTest::addColumn<int>("screenHeight");
    QTest::addColumn<QString>("commands");
    QTest::addColumn<QList<QRect>>("expected");
    const QString five("addButt:0;a addButt:1;b addButt:2;c addButt:3;d addButt:9;e");
    const QRect cell(8, 339, 154, 26);
    const QRect narrow(8, 339, 10, 26);
    const QList<QRect> inTwoRows{cell, cell.translated(160, 0), cell.translated(0, 32),
                                 cell.translated(160, 32)};
    QTest::newRow("three") << 480 << "addButt:0;a addButt:3;b addButt:9;c" << inTwoRows.first(3);
    QTest::newRow("five") << 480 << five
                          << QList<QRect>{narrow, narrow.translated(16, 0), narrow.translated(32, 0),
                                          narrow.translated(48, 0), narrow.translated(64, 0)};
    QTest::newRow("four of five") << 480 << five + " delButt:1" << inTwoRows;
    QTest::newRow("one, low screen") << 279 << "addButt:1;a addButt:2;b" << QList<QRect>{{5, 161, 320, 30}};
    QTest::newRow("two, low screen") << 279 << "addButt:0;a addButt:1;b"
                                     << QList<QRect>{{5, 161, 154, 30}, {165, 161, 154, 30}};
}

void layoutTest::buttons()
{
    QFETCH(int, screenHeight);
    QFETCH(QString, commands);
    QFETCH(QList<QRect>, expected);
    appearance.m_desktopHeight = screenHeight;
    dialogUnderTest dialog;
    dialog.run(commands);
    QList<QRect> shown;
    for (const QPushButton *button : dialog.buttons()) {
        if (button->isVisible())
            shown << button->geometry();
    }
    QCOMPARE(shown, expected);
}

void layoutTest::followsTheSettingsOfItsConstruction()
{
    dialogUnderTest dialog;
    appearance.m_desktopWidth = 1000;
    appearance.m_desktopHeight = 200;
    dialog.run("create:9;a");
    dialog.movePosition();
    QCOMPARE(dialog.geometry(), QRect(152, 40, 336, 400));
    QCOMPARE(dialog.bars()[9]->geometry(), QRect(11, 19, 314, 26));
}

QTEST_MAIN(layoutTest)
#include "layoutTest.moc"
