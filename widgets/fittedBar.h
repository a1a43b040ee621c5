#pragma once

#include "widgets/progressProcess.h"
#include "widgets/texts.h"

/// A bar of the fitted layout with the text that belongs to it: the caption at the left, the percent and
/// perhaps the remaining time at the right (the other way round where the caption is read from the right),
/// and a flat, rounded bar below. Only the caption gives way when there is no room; the tool tip then shows
/// the whole of it. Its colours are those of the window's palette: WindowText, Base for the unfilled part,
/// Highlight.
class fittedBar : public progressProcess
{
    Q_OBJECT

public:
    explicit fittedBar(QWidget *parent);

    void showCaption(const QString &caption);
    /// "15 s left"; empty for none.
    void showRemaining(const QString &remaining);
    /// Keeps room for a remaining time in the size hint.
    void expectRemaining(bool expected) { m_expectsRemaining = expected; }

    /// What it takes to show everything.
    QSize sizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    QRect pulseTrack() const override;

private:
    QString widestRemaining() const;
    QString figuresText() const;
    int captionWidth() const;
    void paintTexts(QPainter &painter) const;
    QRect filledRect() const;

    QString m_caption; ///< in one line
    QString m_remaining;
    bool m_expectsRemaining = false;
    mutable measuredText m_measuredFigures;
    mutable measuredText m_measuredCaption;
};

/// A remaining time, 0 or more seconds, as the fitted layout shows it: "15 s left", "2 min 10 s left", from
/// ten minutes on "12 min left", from an hour on "1 h 5 min left"; in the user's language.
QString timeLeft(int seconds);
/// In its place once a run takes longer than it should.
QString overdueText();
