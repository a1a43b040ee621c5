#include "tests/dialog/dialogUnderTest.h"

#include <QFontMetrics>
#include <QTest>

#include <memory>

namespace
{

std::unique_ptr<dialogUnderTest> newDialog(QSize screen, const QString &commands = {})
{
    appearance.m_desktopWidth = screen.width();
    appearance.m_desktopHeight = screen.height();
    auto dialog = std::make_unique<dialogUnderTest>();
    dialog->run(commands);
    return dialog;
}

QString area(const QRect &rect)
{
    return QStringLiteral("%1,%2,%3,%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

/// What a shown child shows, and where; the children's order tells them apart.
QString fact(const QWidget *child)
{
    QString text;
    if (const auto *label = qobject_cast<const progressLabel *>(child))
        text = label->text();
    else if (const auto *bar = qobject_cast<const progressProcess *>(child))
        text = QStringLiteral("%1=%2").arg(bar->format().remove("%p% ").trimmed()).arg(bar->value());
    else if (const auto *button = qobject_cast<const progressButton *>(child))
        text = '[' + button->text() + ']';
    return text + ':' + area(child->geometry());
}

QString facts(const CProgressDialog &dialog)
{
    QStringList all;
    for (const QWidget *child : dialog.findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        if (!child->isHidden())
            all << fact(child);
    }
    return all.join(' ').remove("total progress=");
}

} // namespace

/// Where the dialog and its children are, in pixels, and what they show.
class layoutTest : public QObject
{
    Q_OBJECT

private slots:
    /// The defaults, with a font for the bars whose line spacing is 16 pixels.
    void init()
    {
        appearance = {};
        for (int pixels = 1; QFontMetrics(appearance.m_barNumFont).lineSpacing() != 16 && pixels < 30;
             ++pixels)
            appearance.m_barNumFont.setPixelSize(pixels);
        QCOMPARE(QFontMetrics(appearance.m_barNumFont).lineSpacing(), 16);
    }

    void windowSize()
    {
        const std::pair<QSize, QRect> sizes[] = {
            {{640, 480}, {152, 40, 336, 400}},
            {{640, 280}, {152, -60, 336, 400}},
            {{640, 279}, {155, 44, 330, 190}},
            {{640, 241}, {155, 25, 330, 190}},
            {{641, 240}, {75, 25, 490, 190}},
            // Divisions truncate toward zero.
            {{11, 281}, {-5, -59, 21, 400}},
        };
        for (const auto &[screen, expected] : sizes)
            QCOMPARE(newDialog(screen)->geometry(), expected);
    }

    void children()
    {
        const struct {
            int height; // of the screen
            const char *commands;
            QString shown;
        } cases[] = {
            {480, "create:7;a addText:9;b create:2;c", "c=0:11,19,314,26 a=0:11,51,314,26 b:11,83,314,26"},
            {480, "addText:0;a create:1;b addText:2;c remove:1", "a:11,19,314,26 c:11,51,314,26"},
            {480, "create:0;a update:0;-1", "a=100:11,19,314,26"},
            {480, "create:0;a update:0;60 create:0;b update:1;050", "b=0:11,19,314,26"},
            {480, "create:0;a updateText:0;b", "a=0:11,19,314,26"},
            {480, "create:0;a addText:0;b", "b:11,19,314,26"},
            {480, "addButt:0;a addButt:3;b addButt:9;c",
             "[a]:8,339,154,26 [b]:168,339,154,26 [c]:8,371,154,26"},
            {480, "addButt:0;a addButt:1;b addButt:2;c addButt:3;d addButt:9;e",
             "[a]:8,339,10,26 [b]:24,339,10,26 [c]:40,339,10,26 [d]:56,339,10,26 [e]:72,339,10,26"},
            {480, "addButt:0;a addButt:1;b addButt:2;c addButt:3;d addButt:9;e delButt:1",
             "[a]:8,339,154,26 [c]:168,339,154,26 [d]:8,371,154,26 [e]:168,371,154,26"},
            {279, "create:0;a addText:4;b create:5;c addButt:2;c", "a=0:8,17,314,26 b:8,47,314,26"},
            {279, "addButt:1;a addButt:2;b", "[a]:5,161,320,30"},
            {279, "addButt:0;a addButt:1;b", "[a]:5,161,154,30 [b]:165,161,154,30"},
        };
        for (const auto &[height, commands, shown] : cases) {
            // With the first average the total bar is hidden.
            const QString total = height == 279 ? "0:8,132,308,26 " : "0:11,307,308,26 ";
            QCOMPARE(facts(*newDialog({640, height}, commands)),
                     shown.startsWith('[') ? total + shown : shown);
        }
    }

    void hideButton()
    {
        appearance.m_busyXpos = 5; // half a position is none
        QCOMPARE(facts(*newDialog({640, 480}, "addButt:0;a")), "0:11,307,308,26 [a]:8,339,154,26");
        appearance.m_busyYpos = 0;
        const auto dialog = newDialog({640, 480}, "addButt:0;a");
        const int width = dialog->findChild<progressButton *>()->sizeHint().width();
        const QString expected("0:11,307,%1,26 [Hide]:%2,303,%3,34 [a]:8,339,154,26");
        QCOMPARE(facts(*dialog), expected.arg(308 - width).arg(328 - width).arg(width));
    }

    /// A copy shows what its source does, in its own grid where the screens differ, and keeps the colours.
    void copies()
    {
        const QString content("create:0;a addText:4;b update:0;7 addButt:1;c");
        const QString more(" create:5;d addButt:9;e");
        for (const auto &[from, to] : {std::pair{480, 480}, std::pair{480, 200}, std::pair{200, 480}}) {
            appearance.m_barColor = Qt::red;
            const auto source = newDialog({640, from}, content + more);
            appearance.m_barColor = Qt::green;
            const auto same = newDialog({640, to}, from == 480 && to == 480 ? content + more : content);
            const auto copy = newDialog({640, to});
            copy->copyFromDialog(*source);
            // The total bar is shown until the next average.
            QCOMPARE(facts(*copy).section(' ', 1), facts(*same));
            QCOMPARE(copy->geometry(), same->geometry());
            QVERIFY(!copy->isVisible());
            QCOMPARE(copy->bars()[0]->palette().color(QPalette::Highlight), QColor(Qt::red));
        }
    }
};

QTEST_MAIN(layoutTest)
#include "layoutTest.moc"
