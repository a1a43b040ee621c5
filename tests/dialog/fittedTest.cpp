#include "tests/dialog/dialogUnderTest.h"

#include "dialog/fittedArrangement.h"
#include "widgets/fittedBar.h"
#include "widgets/markup.h"
#include "widgets/texts.h"
#include "widgets/theme.h"

#include <QApplication>
#include <QHelpEvent>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>

#include <algorithm>

namespace
{

constexpr int emPixels = 10;

/// Nothing is cut off by the window or by anything else.
bool isTidy(const QWidget &window)
{
    QList<QWidget *> children = window.findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    children.removeIf([](const QWidget *child) { return child->isHidden(); });
    return std::all_of(children.begin(), children.end(), [&](const QWidget *child) {
        const auto overlaps = [child](const QWidget *other) {
            return other != child && other->geometry().intersects(child->geometry());
        };
        return window.rect().contains(child->geometry()) &&
               std::none_of(children.begin(), children.end(), overlaps);
    });
}

void useFonts(int pixels)
{
    QFont font(QStringLiteral("Sans Serif"));
    font.setPixelSize(pixels);
    appearance.m_labelFont = appearance.m_barLabelFont = appearance.m_buttonFont = font;
}

} // namespace

/// The fitted layout, the themes, pulsing bars, and what all of them are made of.
class fittedTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        appearance = {};
        appearance.m_windowLayout = windowLayout::fitted;
        theme::instance().apply(windowTheme::light);
        useFonts(emPixels);
    }

    void sizes()
    {
        QString everything;
        for (int i = 0; i < 10; ++i)
            everything += QStringLiteral("create:%1;bar addButt:%1;Button%1 ").arg(i);
        const QString longText(400, 'w');
        const struct {
            QString commands;
            int fontPixels;
            int leastEm;
            int mostEm;
        } cases[] = {
            {"create:0;a addButt:0;b", 10, 24, 24},
            {"create:0;" + longText, 10, 40, 40},
            {"addText:0;" + longText, 10, 40, 40},
            {everything, 10, 40, 40},
            {"addButt:0;" + longText + " addButt:1;b", 10, 40, 40},
            {everything, 40, 1, 40}, // larger than the screen
        };
        for (const auto &[commands, fontPixels, leastEm, mostEm] : cases) {
            useFonts(fontPixels);
            dialogUnderTest dialog(commands);
            QVERIFY(dialog.width() >= leastEm * fontPixels && dialog.width() <= mostEm * fontPixels);
            QVERIFY(dialog.screen()->availableGeometry().contains(dialog.geometry()));
            QVERIFY(isTidy(dialog));
            QCOMPARE(dialog.grab().toImage().pixelColor(0, 0).alpha(), 0); // round corners
            for (const progressButton *button : dialog.buttons())
                QVERIFY(button->isHidden() || button->width() >= 5 * emLength(*button)(1) - 2);
        }
    }

    void growsAroundItsCentre()
    {
        dialogUnderTest dialog;
        const auto isCentredAt = [&dialog](const QPoint &centre) {
            return (dialog.geometry().center() - centre).manhattanLength() <= 1;
        };
        dialog.run("create:0;a");
        const QRect small = dialog.geometry();
        dialog.run("create:1;" + QString(60, 'x') + " addButt:0;b");
        const QRect large = dialog.geometry();
        QVERIFY(large.height() > small.height() && large.width() > small.width());
        QVERIFY(isCentredAt(small.center()));
        QCOMPARE(large.width() % (4 * emPixels), 0);
        dialog.run("remove:1 delButt:0");
        QCOMPARE(dialog.geometry(), large);

        // A text that comes later keeps its room, too.
        dialog.run("addText:1;a");
        dialog.run("updateText:1;" + QString(1500, 'x'));
        QVERIFY(QTest::qWaitFor([&] { return dialog.height() > large.height(); }));
        const int height = dialog.labels()[1]->height();
        dialog.run("updateText:1;a create:2;b remove:2");
        QCOMPARE(dialog.labels()[1]->height(), height);

        // Where it was dragged to, as far as there is room.
        const QRect room = dialog.screen()->availableGeometry();
        dialog.run("remove:0 remove:1 create:0;a");
        QTest::mousePress(&dialog, Qt::LeftButton, {}, {2, 2});
        QTest::mouseMove(&dialog, room.bottomRight() - dialog.rect().bottomRight() - dialog.pos());
        QTest::mouseRelease(&dialog, Qt::LeftButton);
        const QRect dragged = dialog.geometry();
        dialog.run("create:2;b create:3;" + QString(80, 'x'));
        QVERIFY(dialog.width() > dragged.width() && room.contains(dialog.geometry()));
        dialog.run("remove:0 remove:2 remove:3 create:0;a");
        QCOMPARE(dialog.geometry(), dragged);
    }

    void keepsTheUsersSize()
    {
        appearance.m_modal_dialog = false;
        dialogUnderTest dialog("addText:0;" + QString(400, 'x') + " create:1; addButt:0;b");
        const auto *text = static_cast<const fittedLabel *>(dialog.labels()[0]);
        const QSize least = dialog.size();
        QCOMPARE(dialog.minimumSize(), least);
        const QSize given = least + QSize(100, 150);
        dialog.resize(given);
        const int margin = dialog.bars()[1]->x();
        QCOMPARE(dialog.bars()[1]->geometry().right(), given.width() - margin - 1);
        QCOMPARE(dialog.buttons()[0]->geometry().bottom(), given.height() - margin - 1);
        QCOMPARE(text->height(), text->heightFor(text->width()));
        dialog.run("updateText:0;a create:2;b");
        QCOMPARE(dialog.size(), given);
        dialogUnderTest copy;
        copy.copyFromDialog(dialog);
        QCOMPARE(copy.size(), given);
        dialog.resize(least);
        QVERIFY(isTidy(dialog));
        dialog.run("remove:0 remove:1 remove:2 delButt:0 create:0;a");
        QVERIFY(dialog.height() < least.height());
    }

    void arranges()
    {
        QFont font;
        font.setPixelSize(emPixels);
        const QWidget device;
        const fittedDistances distances{emLength(font, device)};
        fittedNeeds needs{{{100, 30, distances.captionToBar}, {20, 20, distances.row}, {300, 30, 0}},
                          {{50, 20}, {60, 20}, {200, 20}},
                          {}};
        const auto heights = [](const fittedPlaces &places) {
            QList<int> result;
            for (const QRect &row : places.rows)
                result << row.height();
            return result;
        };
        const fittedPlaces natural = arranged(needs, 240, 0, 1000, distances);
        QCOMPARE(heights(natural), QList<int>({100, 20, 300}));
        QCOMPARE(natural.rows[1].top() - natural.rows[0].bottom() - 1, distances.captionToBar);
        // Two lines of buttons, at the right.
        QCOMPARE(natural.buttons[0].top(), natural.buttons[1].top());
        QVERIFY(natural.buttons[2].top() > natural.buttons[1].bottom());
        QCOMPARE(natural.buttons[1].right(), natural.buttons[2].right());
        QCOMPARE(natural.buttons[2].bottom() + 1 + distances.margin, natural.height);
        // The highest text gives way first, and what cannot scroll never.
        const int excess[] = {100, 250, 1000};
        const QList<int> left[] = {{100, 20, 200}, {75, 20, 75}, {30, 20, 30}};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(heights(arranged(needs, 240, 0, natural.height - excess[i], distances)), left[i]);
        QCOMPARE(arranged(needs, 240, natural.height + 50, 1000, distances).buttons[0].top(),
                 natural.buttons[0].top() + 50);
        needs.picture = {40, 40};
        QCOMPARE(arranged(needs, 240, 0, 1000, distances).rows[0].left(),
                 distances.margin + 40 + distances.pictureGap);
    }

    /// As large as it is, but no larger than ten em.
    void showsAPicture()
    {
        const QTemporaryDir folder;
        appearance.m_windowImage = folder.filePath("picture.png");
        QList<int> textsLeft;
        for (const int width : {20, 1000}) {
            QVERIFY(QImage(width, width / 2, QImage::Format_RGB32).save(appearance.m_windowImage));
            dialogUnderTest dialog("addText:0;a");
            textsLeft << dialog.labels()[0]->x();
        }
        QCOMPARE(textsLeft[1] - textsLeft[0], 10 * emPixels - 20);
    }

    void showsTheTotalOfSeveralBars()
    {
        dialogUnderTest dialog;
        const auto *const total = dialog.findChild<progressProcess *>();
        dialog.run("create:0;a update:0;40");
        QVERIFY(total->isHidden());
        dialog.run("create:1;b");
        QVERIFY(!total->isHidden());
        QCOMPARE(total->value(), 20);
    }

    void takesMarkup()
    {
        const struct {
            QString markup;
            QString text;
            QString formats; ///< start, length and what differs
        } cases[] = {
            {"a", "a", ""},
            {"a <b>b</b> &lt;&amp;&#65;", "a b <&A", "2,1:700"},
            {"<span foreground='#f00' size='x-large'>a<i>b</i></span>", "ab",
             "0,1:#ff0000*1.44 1,1:#ff0000*1.44i"},
            {"<span font='Sans Bold 20'>a</span><big><small>b</small></big>", "ab", "0,1:700*2.00"},
            {"<a href='file:///etc/passwd'>b</a>", "b", ""},
            // Malformed, or not to be followed.
            {"a < b & c", "a < b & c", ""},
            {"<b>a", "<b>a", ""},
            {"</markup><markup>", "</markup><markup>", ""},
            {"<img src='file:///dev/zero'/>", "<img src='file:///dev/zero'/>", ""},
            {"&file;", "&file;", ""},
            {"<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]>&b;",
             "<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]>&b;", ""},
        };
        QFont font;
        font.setPointSizeF(10);
        for (const auto &[markup, text, formats] : cases) {
            const styledText styled = fromMarkup(markup, font);
            QCOMPARE(styled.text, text);
            QStringList found;
            for (const auto &[start, length, format] : styled.formats) {
                QString what = QStringLiteral("%1,%2:").arg(start).arg(length);
                if (format.hasProperty(QTextFormat::FontWeight))
                    what += QString::number(format.fontWeight());
                if (format.hasProperty(QTextFormat::ForegroundBrush))
                    what += format.foreground().color().name();
                if (format.hasProperty(QTextFormat::FontPointSize))
                    what += "*" + QString::number(format.fontPointSize() / 10, 'f', 2);
                found << what + (format.fontItalic() ? "i" : "");
            }
            QCOMPARE(found.join(' '), formats);
        }
        // The texts of the protocol are plain, unless the client says otherwise.
        const QString markup = "<i>" + QString(20, 'w') + "</i>";
        for (const bool isDrawn : {false, true}) {
            appearance.m_windowMarkup = isDrawn ? windowMarkup::on : windowMarkup::off;
            dialogUnderTest dialog("addText:0;" + markup);
            QCOMPARE(dialog.labels()[0]->accessibleName(), isDrawn ? QString(20, 'w') : QString());
        }
    }

    void isTwiceAsLargeWithTwiceTheFont()
    {
        const QString commands = "create:0;" + QString(30, 'x') + " addText:1;a addButt:0;Stop";
        dialogUnderTest one(commands);
        useFonts(2 * emPixels);
        dialogUnderTest two(commands);
        QVERIFY(qAbs(two.width() - 2 * one.width()) <= 4 && qAbs(two.height() - 2 * one.height()) <= 8);
    }

    void isReadable()
    {
        for (const bool isDark : {false, true}) {
            theme::instance().apply(isDark ? windowTheme::dark : windowTheme::light);
            const dialogUnderTest dialog;
            const auto color = [&dialog](QPalette::ColorRole role) { return dialog.palette().color(role); };
            QCOMPARE(color(QPalette::WindowText), QColor(isDark ? Qt::white : Qt::black));
            QVERIFY(contrast(color(QPalette::WindowText), color(QPalette::Window)) >= 4.5);
            for (const double share : {0.0, 0.08, 0.2}) {
                const QColor body = mixed(color(QPalette::Button), color(QPalette::ButtonText), share);
                QVERIFY(contrast(color(QPalette::ButtonText), body) >= 4.5);
            }
            QVERIFY(contrast(color(QPalette::Highlight), color(QPalette::Base)) >= 3);
            QVERIFY(contrast(color(QPalette::Link), color(QPalette::Window)) >= 3);
            // In the grid.
            QVERIFY(contrast(appearance.m_invertedNumberColor, appearance.m_barColor) >= 4.5);
            const QColor caption = readableOn(appearance.m_buttonBaseColor);
            for (const QColor &part :
                 {appearance.m_shadowLightColor, appearance.m_buttonBaseColor, appearance.m_shadowDarkColor})
                QVERIFY(contrast(caption, part) >= 4.5);
        }
    }

    void leavesLaterEntries()
    {
        appearance.m_dialogBackgroundColor = QColor("#222222");
        const dialogUnderTest dark;
        QCOMPARE(dark.palette().color(QPalette::Window), QColor("#222222"));
        QCOMPARE(dark.palette().color(QPalette::WindowText), QColor(Qt::white));
        appearance.m_panelTextColor = Qt::red;
        QCOMPARE(dialogUnderTest().palette().color(QPalette::WindowText), QColor(Qt::red));
        // Without a theme the grid has its black.
        appearance = {};
        QVERIFY(!themedText({}, Qt::black).isValid());
    }

    /// Text by text, without a button that has the keyboard; Escape closes.
    void obeysTheDesktopsKeys()
    {
        dialogUnderTest dialog;
        const QString text(20'000, 'x');
        dialog.run("addText:0;" + text + " addText:1;" + text);
        const auto places = [&dialog] {
            QString all;
            for (const auto *bar : dialog.findChildren<QScrollBar *>())
                all += bar->value() == 0 ? '^' : bar->value() == bar->maximum() ? '_' : '-';
            return all;
        };
        const std::pair<Qt::Key, const char *> keys[] = {
            {Qt::Key_PageDown, "-^"}, {Qt::Key_End, "__"}, {Qt::Key_PageUp, "_-"}, {Qt::Key_Home, "^^"}};
        for (const auto &[key, expected] : keys) {
            QTest::keyClick(&dialog, key);
            QCOMPARE(places(), expected);
        }
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
    }

    void pulses()
    {
        for (const windowLayout layout : {windowLayout::grid, windowLayout::fitted}) {
            appearance.m_windowLayout = layout;
            dialogUnderTest dialog("create:0;a update:0;40 create:1;b");
            dialog.pulseBar(0);
            QVERIFY(dialog.bars()[0]->isPulsing() && !dialog.bars()[1]->isPulsing());
            const QImage before = dialog.grab().toImage();
            QVERIFY(QTest::qWaitFor([&] { return dialog.grab().toImage() != before; }));
            dialogUnderTest copy;
            copy.copyFromDialog(dialog);
            QVERIFY(copy.bars()[0]->isPulsing());
            dialog.updateBar(0, 40);
            QVERIFY(!dialog.bars()[0]->isPulsing());
            dialog.pulseBar(1);
            dialog.run("create:1;b");
            QVERIFY(!dialog.bars()[1]->isPulsing());
        }
    }

    void wraps()
    {
        const std::pair<QString, int> cases[] = {
            {"", 1},           {"a", 1},
            {"a\n\nb", 3},     {"a\n", 1},
            {"a\nb\nc\nd", 4}, {"wwww wwww wwww", 3},
            {"wwwwwwwwww", 2}, {QString(40, 'w'), 8},
        };
        QFont font(QStringLiteral("Monospace"));
        font.setPixelSize(20);
        fittedLabel label(nullptr);
        label.setFont(font);
        const int width = QFontMetrics(font).horizontalAdvance("wwwww.") - 1;
        for (const auto &[text, lines] : cases) {
            label.setText(text);
            QCOMPARE(label.heightFor(width), lines * label.fontMetrics().lineSpacing());
        }
        const int all = label.heightFor(width);
        label.takePlace({0, 0, width, all});
        QVERIFY(!label.findChild<QScrollBar *>());
        label.takePlace({0, 0, width, all / 2});
        QVERIFY(label.findChild<QScrollBar *>()->maximum() >= all / 2);
    }

    void readsFromRightToLeft()
    {
        dialogUnderTest dialog;
        for (const QString &text : {QString(20, u'a'), QString(20, u'\u05d0')}) {
            dialog.run("addText:0;" + text + " create:1;" + text);
            for (QWidget *row :
                 {static_cast<QWidget *>(dialog.labels()[0]), static_cast<QWidget *>(dialog.bars()[1])}) {
                const QImage halves = row->grab().toImage().scaled(2, 1, {}, Qt::SmoothTransformation);
                QCOMPARE(halves.pixelColor(0, 0).lightness() > halves.pixelColor(1, 0).lightness(),
                         text[0] != u'a');
            }
        }
    }

    void timesLeft()
    {
        const std::pair<int, const char *> cases[] = {{0, "0 s left"},          {59, "59 s left"},
                                                      {60, "1 min 0 s left"},   {599, "9 min 59 s left"},
                                                      {600, "10 min left"},     {3599, "59 min left"},
                                                      {3600, "1 h 0 min left"}, {90000, "25 h 0 min left"}};
        for (const auto &[seconds, text] : cases)
            QCOMPARE(timeLeft(seconds), text);
    }

    void showsCutTextsAsToolTips()
    {
        const QString longText = QString(400, 'w');
        for (const QString &text : {longText, QStringLiteral("a")}) {
            dialogUnderTest dialog("create:0;" + text + " addButt:0;" + text);
            const QList<QWidget *> children{dialog.bars()[0], dialog.buttons()[0]};
            for (QWidget *child : children) {
                QToolTip::hideText();
                QHelpEvent asks(QEvent::ToolTip, {1, 1}, child->mapToGlobal(QPoint(1, 1)));
                QApplication::sendEvent(child, &asks);
                QString shown = QToolTip::isVisible() ? QToolTip::text() : QString();
                shown.remove(QRegularExpression(QStringLiteral("<[^>]*>")));
                QCOMPARE(shown, text == longText ? longText : QString());
            }
        }
    }
};

QTEST_MAIN(fittedTest)
#include "fittedTest.moc"
