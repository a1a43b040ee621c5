#pragma once

#include <QProgressBar>

/// A bar of the progress dialog or of the busy window.
///
/// The toolkit's bar repaints synchronously whenever its value changes, which caps a client at a few
/// thousand updates a second; `setValue` and `reset` of this class leave the painting to the event loop.
class progressProcess : public QProgressBar
{
    Q_OBJECT

public:
    explicit progressProcess(QWidget *parent);

    /// Shows `label` on the bar, "%p" in it standing for the percent; an empty label shows nothing and
    /// brings back the font of bars without a text.
    void setLabel(const QString &label);
    /// Captions the bar: `text`, a blank, the percent and a blank.
    void setCaption(const QString &text) { setLabel(text + QStringLiteral(" %p% ")); }

    /// As the toolkit's own, a value outside the range is ignored.
    void setValue(int value);
    void reset();

private:
    QString m_label;
};
