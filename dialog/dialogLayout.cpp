#include "dialog/dialogLayout.h"

#include "widgets/appearance.h"
#include "widgets/progressProcess.h"
#include "widgets/theme.h"

void dialogLayout::takeColors()
{
    shareBarPalette();
    for (int i = 0; i < m_content.maxBars; ++i)
        m_content.bars[i]->setPalette(BAR_PALETTE);
}

void dialogLayout::shareBarPalette()
{
    BAR_PALETTE = barPalette(m_content.m_totalBar->palette(), appearance.m_invertedNumberColor,
                             appearance.m_barColor, appearance.m_barBackgroundColor);
    m_content.m_totalBar->setPalette(BAR_PALETTE);
}
