#include "dialog/screenReader.h"

#include "dialog/CProgressDialog.h"
#include "widgets/progressProcess.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace
{

/// A bar with the value that it keeps itself, busy while it moves to and fro.
class describedBar : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit describedBar(progressProcess *bar)
        : QAccessibleWidget(bar, QAccessible::ProgressBar), m_bar(*bar)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = m_bar.isPulsing();
        state.readOnly = true;
        return state;
    }

    QVariant currentValue() const override { return m_bar.value(); }
    QVariant minimumValue() const override { return m_bar.minimum(); }
    QVariant maximumValue() const override { return m_bar.maximum(); }
    QVariant minimumStepSize() const override { return 1; }
    void setCurrentValue(const QVariant &) override {}

private:
    const progressProcess &m_bar;
};

QAccessibleInterface *described(const QString &, QObject *object)
{
    if (auto *bar = qobject_cast<progressProcess *>(object))
        return new describedBar(bar);
    if (auto *dialog = qobject_cast<CProgressDialog *>(object))
        return new QAccessibleWidget(dialog, QAccessible::Dialog);
    return nullptr;
}

} // namespace

void describeToScreenReaders()
{
    QAccessible::installFactory(described);
}
