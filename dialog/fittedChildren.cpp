#include "dialog/fittedChildren.h"

#include "dialog/dialogSlots.h"
#include "language/language.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/fittedBar.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/texts.h"

#include <QScrollBar>

#include <algorithm>
#include <utility>

fittedBar &fittedChildren::bar(int id) const
{
    return static_cast<fittedBar &>(*m_content.bars[id]);
}

fittedLabel &fittedChildren::label(int id) const
{
    return static_cast<fittedLabel &>(*m_content.labels[id]);
}

fittedBar &fittedChildren::totalBar() const
{
    return static_cast<fittedBar &>(*m_content.m_totalBar);
}

int fittedChildren::shownBars() const
{
    int count = 0;
    for (int i = 0; i < m_content.maxBars; ++i)
        count += m_content.showsBar(i);
    return count;
}

/// For several bars; without any for the time that is left.
bool fittedChildren::showsTotalRow() const
{
    const int bars = shownBars();
    return bars > 1 || (bars == 0 && !m_left.isEmpty());
}

void fittedChildren::show() const
{
    m_content.m_totalLabel->hide();
    totalBar().setVisible(showsTotalRow());
    totalBar().showCaption(translated("Total progress"));
    totalBar().expectRemaining(true);
    for (int i = 0; i < m_content.maxBars; ++i) {
        label(i).setVisible(m_content.labelVisible[i]);
        if (!m_content.labelVisible[i])
            label(i).forgetHeight();
        bar(i).setVisible(m_content.showsBar(i));
        if (m_content.showsBar(i))
            bar(i).showCaption(label(i).text());
    }
    m_content.m_hideButton->setText(translated("Hide"));
    m_content.m_hideButton->setVisible(busyWidget::hasPosition());
    for (int i = 0; i < m_content.maxButtons; ++i)
        m_content.buttons[i]->setVisible(m_content.buttonVisible[i]);
    tellLeft();
}

void fittedChildren::useFonts(double scale) const
{
    const QFont barFont = scaledFont(appearance.m_barLabelFont, scale);
    const QFont labelFont = scaledFont(appearance.m_labelFont, scale);
    const QFont buttonFont = scaledFont(appearance.m_buttonFont, scale);
    totalBar().setFont(barFont);
    m_content.m_totalLabel->setFont(labelFont);
    m_content.m_hideButton->setFont(buttonFont);
    for (int i = 0; i < m_content.maxBars; ++i) {
        label(i).setFont(labelFont);
        bar(i).setFont(barFont);
    }
    for (int i = 0; i < m_content.maxButtons; ++i)
        m_content.buttons[i]->setFont(buttonFont);
}

bool fittedChildren::takeText(int id) const
{
    if (!m_content.showsBar(id))
        return false;
    bar(id).showCaption(label(id).text());
    return bar(id).sizeHint().width() > bar(id).width();
}

bool fittedChildren::takeLeft(const QString &left)
{
    if (left == m_left)
        return false;
    m_left = left;
    tellLeft();
    return showsTotalRow() == totalBar().isHidden();
}

void fittedChildren::tellLeft() const
{
    const bool isSingle = shownBars() == 1;
    for (int i = 0; i < m_content.maxBars; ++i) {
        bar(i).expectRemaining(isSingle);
        bar(i).showRemaining(isSingle && m_content.showsBar(i) ? m_left : QString());
    }
    totalBar().showRemaining(m_left);
}

void fittedChildren::goOnFrom(const fittedChildren &src)
{
    m_left = src.m_left;
    totalBar().setValue(src.totalBar().value());
    for (int i = 0; i < m_content.maxBars; ++i)
        label(i).keepHeightOf(src.label(i));
}

/// Page by page, those below come after those above, and the other way round backwards.
bool fittedChildren::scroll(int key) const
{
    const QAbstractSlider::SliderAction action = scrollAction(key);
    if (action == QAbstractSlider::SliderNoAction)
        return false;
    QList<QScrollBar *> bars;
    for (const row &each : rows()) {
        if (QScrollBar *const bar = each.text ? each.text->scrollBar() : nullptr)
            bars << bar;
    }
    if (key == Qt::Key_PageUp)
        std::reverse(bars.begin(), bars.end());
    for (QScrollBar *bar : std::as_const(bars)) {
        const int before = bar->value();
        bar->triggerAction(action);
        if (bar->value() != before && (key == Qt::Key_PageUp || key == Qt::Key_PageDown))
            break;
    }
    return !bars.isEmpty();
}

std::vector<fittedChildren::row> fittedChildren::rows() const
{
    std::vector<row> all;
    for (const dialogSlots::group &group : m_content.groups()) {
        for (const int i : group.ids) {
            if (m_content.labelVisible[i])
                all.push_back({&label(i), nullptr, {}});
            else if (m_content.barVisible[i])
                all.push_back({nullptr, &bar(i), {}});
        }
        if (const QList<QWidget *> below = buttonsOf(group.ids); group.leader >= 0 && !below.isEmpty())
            all.push_back({nullptr, nullptr, below});
    }
    if (showsTotalRow())
        all.push_back({nullptr, &totalBar(), {}});
    return all;
}

QList<QWidget *> fittedChildren::buttons() const
{
    QList<QWidget *> all;
    if (!m_content.m_hideButton->isHidden())
        all << m_content.m_hideButton;
    for (const dialogSlots::group &group : m_content.groups()) {
        if (group.leader < 0)
            all << buttonsOf(group.ids);
    }
    return all;
}

QList<QWidget *> fittedChildren::buttonsOf(const std::vector<int> &ids) const
{
    QList<QWidget *> shown;
    for (const int i : ids) {
        if (m_content.buttonVisible[i])
            shown << m_content.buttons[i];
    }
    return shown;
}
