#include "dialog/CProgressDialog.h"

#include "dialog/dialogLayout.h"
#include "widgets/appearance.h"
#include "widgets/imageFile.h"
#include "widgets/literalTitle.h"
#include "widgets/progressButton.h"
#include "widgets/theme.h"

#include <QIcon>

#include <algorithm>

CProgressDialog::CProgressDialog(dialogHost &host)
    : QWidget(nullptr, appearance.m_dialog_flags), m_host(host), m_layout(dialogLayout::make(*this, *this))
{
    m_layout->createWidgets();
    connect(m_hideButton, &QPushButton::clicked, this, &CProgressDialog::buttonClicked);
    m_layout->fixSize();
    movePosition();
    setWindowTitle(literalTitle(appearance.m_windowTitle));
    setWindowIcon(QIcon(imageFile(appearance.m_windowIcon)));
    m_layout->loadBackground();
    installEventFilter(this);
    connect(&theme::instance(), &theme::changed, this, &CProgressDialog::takeColors);
}

void CProgressDialog::takeColors()
{
    m_layout->takeColors();
    for (auto *child : findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->update();
    update();
}

void CProgressDialog::movePosition()
{
    m_layout->movePosition();
}

void CProgressDialog::reloadPixmap()
{
    m_layout->reloadPixmap();
}

void CProgressDialog::paintEvent(QPaintEvent *event)
{
    m_layout->paint(*event);
}

bool CProgressDialog::ensureVisible()
{
    m_layout->place(m_timerId != -1);
    focusFirstButton();
    return takeTimingStep(hasContent());
}

void CProgressDialog::focusFirstButton()
{
    m_hideButton->setFocus();
    const bool *first = std::find(buttonVisible, buttonVisible + maxButtons, true);
    if (first != buttonVisible + maxButtons)
        buttons[first - buttonVisible]->setFocus();
}

void CProgressDialog::giveBack()
{
    if (m_timerId != -1)
        killTimer(m_timerId);
    // What is still on its way to it finds no children any more.
    removeEventFilter(this);
    theme::instance().disconnect(this);
    m_layout->dropImages();
    destroy();
    static_cast<dialogSlots &>(*this) = {};
    qDeleteAll(findChildren<QWidget *>(Qt::FindDirectChildrenOnly));
}
