#include "dialog/dialogLayout.h"

#include "widgets/appearance.h"
#include "widgets/imageFile.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"
#include "widgets/theme.h"

#include <QIcon>

#include <algorithm>
#include <numeric>

int dialogSlots::shownButtons() const
{
    return static_cast<int>(std::count(buttonVisible, buttonVisible + maxButtons, true));
}

bool dialogSlots::hasContent() const
{
    const auto anySet = [](const bool *flags, int count) {
        return std::find(flags, flags + count, true) != flags + count;
    };
    return anySet(labelVisible, maxBars) || anySet(barVisible, maxBars) || anySet(buttonVisible, maxButtons);
}

bool dialogSlots::hasUnfinished() const
{
    dialogSlots others = *this;
    for (int i = 0; i < MAX_ENTRIES; ++i) {
        if (finished[i])
            others.labelVisible[i] = others.barVisible[i] = others.buttonVisible[i] = false;
    }
    return others.hasContent();
}

void dialogSlots::join(int id, int leaderId)
{
    if (id == leaderId && leader[id] != id)
        coming[id] = 1 + *std::max_element(std::begin(coming), std::end(coming));
    leader[id] = leaderId;
}

void dialogSlots::leaveIfEmpty(int id)
{
    if (labelVisible[id] || barVisible[id] || buttonVisible[id])
        return;
    leader[id] = -1;
    coming[id] = 0;
}

std::array<int, dialogSlots::MAX_ENTRIES> dialogSlots::order() const
{
    std::array<int, MAX_ENTRIES> all{};
    std::iota(all.begin(), all.end(), 0);
    const auto rank = [this](int id) { return leader[id] < 0 ? 0 : coming[leader[id]]; };
    std::stable_sort(all.begin(), all.end(), [&rank](int a, int b) { return rank(a) < rank(b); });
    return all;
}

int dialogSlots::groupOf(int id) const
{
    const auto isApart = [this, id](int other) {
        return leader[other] != leader[id] &&
               (labelVisible[other] || barVisible[other] || buttonVisible[other]);
    };
    const auto all = order();
    return std::any_of(all.begin(), all.end(), isApart) ? leader[id] : -1;
}

QIcon dialogLayout::icon() const
{
    return QIcon(imageFile(appearance.m_windowIcon));
}

void dialogLayout::createWidgets()
{
    m_content.m_totalLabel = newLabel();
    m_content.m_totalLabel->setText(QStringLiteral("total progress"));
    m_content.m_totalBar = newBar();
    m_content.m_totalBar->setValue(0);

    m_content.m_hideButton = newButton();
    m_content.m_hideButton->setText(QStringLiteral("Hide"));

    for (int i = 0; i < m_content.maxBars; ++i) {
        m_content.labels[i] = newLabel();
        m_content.bars[i] = newBar();
    }
    shareBarPalette();
    for (int i = 0; i < m_content.maxButtons; ++i)
        m_content.buttons[i] = newButton();
}

void dialogLayout::shareBarPalette()
{
    BAR_PALETTE = m_content.m_totalBar->palette();
    BAR_PALETTE.setBrush(QPalette::All, QPalette::HighlightedText, QBrush(appearance.m_invertedNumberColor));
    BAR_PALETTE.setBrush(QPalette::All, QPalette::Highlight, QBrush(appearance.m_barColor));
    BAR_PALETTE.setBrush(QPalette::All, QPalette::Window, QBrush(appearance.m_barBackgroundColor));
    colorBar(BAR_PALETTE);
    m_content.m_totalBar->setPalette(BAR_PALETTE);
}
