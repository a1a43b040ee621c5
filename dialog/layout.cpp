#include "dialog/CProgressDialog.h"

#include "dialog/dialogHost.h"
#include "dialog/fittedLayout.h"
#include "dialog/gridLayout.h"
#include "widgets/appearance.h"
#include "widgets/progressButton.h"
#include "widgets/texts.h"
#include "widgets/theme.h"

#include <QCloseEvent>
#include <QIcon>

#include <algorithm>

namespace
{

/// The layout that the settings ask for.
std::unique_ptr<dialogLayout> newLayout(QWidget &window, dialogSlots &content)
{
    if (appearance.m_windowLayout == windowLayout::fitted)
        return std::make_unique<fittedLayout>(window, content);
    return std::make_unique<gridLayout>(window, content);
}

} // namespace

CProgressDialog::CProgressDialog(dialogHost &host)
    : QWidget(nullptr, appearance.m_dialog_flags), m_host(host), m_layout(newLayout(*this, *this)),
      m_input(*this, *this, *m_layout, host)
{
    m_layout->createWidgets();
    connect(m_hideButton, &QPushButton::clicked, this, &CProgressDialog::buttonClicked);
    m_layout->fixSize();
    movePosition();
    setWindowTitle(literalTitle(appearance.m_windowTitle));
    setWindowIcon(m_layout->icon());
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

/// A close request just hides the window; the content stays.
void CProgressDialog::closeEvent(QCloseEvent *event)
{
    if (!event->spontaneous())
        return;
    if (m_host.isInputBlocked())
        event->ignore();
    else
        m_host.closed();
}

bool CProgressDialog::eventFilter(QObject *obj, QEvent *ev)
{
    if (m_input.filter(obj, ev))
        return true;
    if (obj == this && ev->type() == QEvent::LayoutRequest)
        m_layout->placeAgain();
    if (obj == this && ev->type() == QEvent::Resize)
        m_layout->takeResized();
    if (obj == this && ev->type() == QEvent::Show)
        buttons[0]->setFocus();
    return false;
}

void CProgressDialog::buttonClicked()
{
    if (sender() == m_hideButton)
        setVisible(false);
    m_input.sendClicked(sender());
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
