#pragma once

#include <QProgressBar>

/// A bar of the progress dialog or of the busy window.
///
/// The toolkit's bar repaints synchronously whenever its value changes, which caps a client at a few
/// thousand updates a second. This one keeps the value by itself and hands it on when it is painted, so a
/// burst of updates costs no more than the last of them; `value()` of the base class lags behind. The range
/// is the toolkit's first one, 0 to 100, and stays.
class progressProcess : public QProgressBar
{
    Q_OBJECT

public:
    explicit progressProcess(QWidget *parent);

    /// Shows `label` on the bar, "%p" in it standing for the percent; an empty label shows nothing and
    /// brings back the font of bars without a text.
    void setLabel(const QString &label);
    /// Captions the bar: `text`, a blank, the percent and a blank. For screen readers, and while it pulses,
    /// it is the text alone.
    void setCaption(const QString &text);

    /// The value, one below the minimum before the first.
    int value() const { return m_value; }
    /// As the toolkit's own, a value outside the range is ignored. Ends the pulsing.
    void setValue(int value);

    /// Shows something that moves to and fro in the place of the percent, until the next value; the value
    /// stays what it was.
    void pulse();
    bool isPulsing() const { return m_isPulsing; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    /// Hands the value to the base class, within a painting.
    void passValueOn();
    /// Where the moving part is to be painted now.
    QRect paintedPulse();
    /// What it moves in.
    virtual QRect pulseTrack() const;

private:
    void followClock(bool follows);
    QRect pulseRect() const;
    void movePulse();
    void paintPulse();

    int m_value;
    /// What the base class has.
    int m_passedOn;
    bool m_isPulsing = false;
    QRect m_paintedPulse;
};
