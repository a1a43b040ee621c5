#include "widgets/progressLabel.h"

#include "widgets/appearance.h"

progressLabel::progressLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setAutoFillBackground(false);
    setFont(appearance.m_labelFont);
}
