#include "widgets/wrappedButtons.h"

#include <QBoxLayout>
#include <QDialogButtonBox>

#include <memory>

namespace
{

/// The widgets of a layout, which is empty afterwards.
QList<QWidget *> taken(QLayout &layout)
{
    QList<QWidget *> widgets;
    while (const std::unique_ptr<QLayoutItem> item{layout.takeAt(0)}) {
        if (item->widget())
            widgets << item->widget();
    }
    return widgets;
}

} // namespace

void wrapButtons(QDialogButtonBox &box, int width)
{
    auto *lines = qobject_cast<QBoxLayout *>(box.layout());
    if (!lines || lines->direction() == QBoxLayout::TopToBottom)
        return;
    const QList<QWidget *> buttons = taken(*lines);
    lines->setDirection(QBoxLayout::TopToBottom);
    QBoxLayout *line = nullptr;
    int left = 0;
    for (QWidget *button : buttons) {
        const int needed = button->minimumSizeHint().width();
        if (!line || needed > left) {
            line = new QHBoxLayout;
            lines->addLayout(line);
            line->addStretch();
            left = width;
        }
        line->addWidget(button);
        left -= needed + lines->spacing();
    }
    box.updateGeometry();
}
