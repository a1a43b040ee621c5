#pragma once

#include "widgets/texts.h"

#include <QLabel>
#include <QTextLayout>

class QScrollBar;

/// A caption or a text line of the progress dialog. The text is shown as it came, never as markup.
class progressLabel : public QLabel
{
    Q_OBJECT

public:
    explicit progressLabel(QWidget *parent);
};

/// A text line of the fitted layout: it wraps, and scrolls where it is not given the height that it asks for.
/// Its text is markup where the settings say so.
class fittedLabel : public progressLabel
{
    Q_OBJECT

public:
    explicit fittedLabel(QWidget *parent);

    /// For the text without wrapping; the height is that of one line.
    QSize sizeHint() const override;
    /// Pixels that all lines of the text take at this width.
    int heightFor(int width) const;
    /// The same, but no less than the text has taken before at this width, in lines.
    int keptHeightFor(int width);
    void keepHeightOf(const fittedLabel &other)
    {
        m_keptLines = other.m_keptLines;
        m_keptWidth = other.m_keptWidth;
    }
    void forgetHeight() { m_keptLines = 0; }
    /// Stands there from now on, and scrolls as far as that is too low for the text.
    void takePlace(const QRect &place);
    /// Null while all of the text is seen.
    QScrollBar *scrollBar() const { return m_scrolls ? m_scroll : nullptr; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    struct source {
        QString text;
        QFont font;
        bool isMarkup = false;
        bool operator==(const source &) const = default;
    };

    void takeText() const;
    QString plainText() const;
    void layOut(int width) const;

    /// Null until the text first had to scroll.
    QScrollBar *m_scroll = nullptr;
    bool m_scrolls = false;
    double m_keptLines = 0;
    int m_keptWidth = 0;
    mutable measuredText m_measured;
    /// The text as it was laid out last, and what for.
    mutable QTextLayout m_layout;
    mutable source m_source;
    mutable int m_layoutWidth = -1;
    mutable int m_layoutHeight = 0;
};
