#include "widgets/progressButton.h"

#include "widgets/appearance.h"

progressButton::progressButton(QWidget *parent) : QPushButton(parent)
{
    setFont(appearance::m_buttonFont);
    installEventFilter(parent);
    setFlat(true);
}
