#include "dialog/CProgressDialog.h"
#include "tests/dialog/silentHost.h"
#include "widgets/appearance.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"

#include <QFontMetrics>
#include <QTest>

#include <memory>

namespace
{

silentHost host;

using dialogPointer = std::unique_ptr<CProgressDialog>;

/// A dialog for a screen, after commands: a letter of create, Text, update, Button, remove or Delete (a
/// button), a slot, and a text or percent.
dialogPointer newDialog(QSize screen, const QString &commands = {})
{
    appearance.m_desktopWidth = screen.width();
    appearance.m_desktopHeight = screen.height();
    auto dialog = std::make_unique<CProgressDialog>(host);
    for (const QString &command : commands.split(' ', Qt::SkipEmptyParts)) {
        const int slot = command[1].digitValue();
        const QString text = command.mid(2);
        switch (command[0].toLatin1()) {
        case 'c':
            dialog->createBar(slot, text);
            break;
        case 'T':
            dialog->createText(slot, text);
            break;
        case 'u':
            dialog->updateBar(slot, text.toInt());
            break;
        case 't':
            dialog->updateText(slot, text);
            break;
        case 'B':
            dialog->addButton(slot, text);
            break;
        case 'r':
            dialog->removeBar(slot);
            break;
        case 'D':
            dialog->removeButton(slot);
            break;
        default:
            QTest::qFail(command.toLatin1(), __FILE__, __LINE__);
        }
    }
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
    void init();
    void windowSize();
    void children_data();
    void children();
    void hideButton();
    void copies();
};

/// The defaults, with a font for the bars whose line spacing is 16 pixels.
void layoutTest::init()
{
    appearance = {};
    for (int pixels = 1; QFontMetrics(appearance.m_barNumFont).lineSpacing() != 16 && pixels < 30; ++pixels)
        appearance.m_barNumFont.setPixelSize(pixels);
    QCOMPARE(QFontMetrics(appearance.m_barNumFont).lineSpacing(), 16);
}

void layoutTest::windowSize()
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
    for (const auto &[screen, expected] : sizes) {
        const dialogPointer dialog = newDialog(screen);
        QCOMPARE(dialog->geometry(), expected);
        // It is its own: later settings are for later dialogs. The offset alone is everybody's.
        appearance.m_desktopWidth = 1;
        appearance.m_paintOffsetX = 5;
        appearance.m_paintOffsetY = -7;
        dialog->movePosition();
        QCOMPARE(dialog->geometry(), expected.translated(5, -7));
        appearance.m_paintOffsetX = appearance.m_paintOffsetY = 0;
    }
}

void layoutTest::children_data()
{
    QTest::addColumn<int>("height"); // of the screen
    QTest::addColumn<QString>("commands");
    QTest::addColumn<QString>("shown");
    const auto row = [](int height, const char *commands, const char *shown) {
        QTest::newRow(commands) << height << commands << shown;
    };
    row(480, "c7a T9b c2c", "c=0:11,19,314,26 a=0:11,51,314,26 b:11,83,314,26");
    row(480, "T0a c1b T2c r1", "a:11,19,314,26 c:11,51,314,26");
    row(480, "c0a u0-1", "a=100:11,19,314,26");
    row(480, "c0a u060 c0b u1050", "b=0:11,19,314,26");
    row(480, "c0a t0b", "a=0:11,19,314,26");
    row(480, "c0a T0b", "b:11,19,314,26");
    row(480, "B0a B3b B9c", "[a]:8,339,154,26 [b]:168,339,154,26 [c]:8,371,154,26");
    row(480, "B0a B1b B2c B3d B9e",
        "[a]:8,339,10,26 [b]:24,339,10,26 [c]:40,339,10,26 [d]:56,339,10,26 [e]:72,339,10,26");
    row(480, "B0a B1b B2c B3d B9e D1",
        "[a]:8,339,154,26 [c]:168,339,154,26 [d]:8,371,154,26 [e]:168,371,154,26");
    row(279, "c0a T4b c5c B2c", "a=0:8,17,314,26 b:8,47,314,26");
    row(279, "B1a B2b", "[a]:5,161,320,30");
    row(279, "B0a B1b", "[a]:5,161,154,30 [b]:165,161,154,30");
}

void layoutTest::children()
{
    QFETCH(int, height);
    QFETCH(QString, commands);
    QFETCH(QString, shown);
    const dialogPointer dialog = newDialog({640, height}, commands);
    // With the first average the total bar is hidden.
    const QString total = height == 279 ? "0:8,132,308,26 " : "0:11,307,308,26 ";
    QCOMPARE(facts(*dialog), shown.startsWith('[') ? total + shown : shown);
}

void layoutTest::hideButton()
{
    appearance.m_busyXpos = 5; // half a position is none
    QCOMPARE(facts(*newDialog({640, 480}, "B0a")), "0:11,307,308,26 [a]:8,339,154,26");
    appearance.m_busyYpos = 0;
    const dialogPointer dialog = newDialog({640, 480}, "B0a");
    const int width = dialog->findChild<progressButton *>()->sizeHint().width();
    const QString expected("0:11,307,%1,26 [Hide]:%2,303,%3,34 [a]:8,339,154,26");
    QCOMPARE(facts(*dialog), expected.arg(308 - width).arg(328 - width).arg(width));
}

/// A copy shows what its source does, in its own grid where the screens differ, and keeps the colours.
void layoutTest::copies()
{
    const QString content("c0a T4b u07 B1c");
    const QString more(" c5d B9e");
    for (const auto &[from, to] : {std::pair{480, 480}, std::pair{480, 200}, std::pair{200, 480}}) {
        appearance.m_barColor = Qt::red;
        const dialogPointer source = newDialog({640, from}, content + more);
        appearance.m_barColor = Qt::green;
        const dialogPointer same = newDialog({640, to}, from == 480 && to == 480 ? content + more : content);
        const dialogPointer copy = newDialog({640, to});
        copy->copyFromDialog(*source);
        // The total bar is shown until the next average.
        QCOMPARE(facts(*copy).section(' ', 1), facts(*same));
        QCOMPARE(copy->geometry(), same->geometry());
        QVERIFY(!copy->isVisible());
        const auto *bar = copy->findChildren<progressProcess *>()[1];
        QCOMPARE(bar->palette().color(QPalette::Highlight), QColor(Qt::red));
    }
}

QTEST_MAIN(layoutTest)
#include "layoutTest.moc"
