#pragma once

#include <QPlainTextEdit>

/// A text to read, which scrolls; the first of several lines is bold. However long it is, only as much is
/// laid out as was scrolled to, and a little more. Its keyboard is left to the window; the mouse can select
/// and copy.
class scrolledText : public QPlainTextEdit
{
public:
    /// Of a text that nobody would read to the end, the beginning and a line that says so.
    static QString beginning(const QString &text);
    /// Whether its first line stands above others.
    static bool hasHeading(const QString &text);

    scrolledText(const QString &text, QWidget *parent);

    /// The height, in pixels, that shows so many lines.
    int heightOfLines(int count) const;
    /// Turns pages as a key asks for; false for other keys.
    bool scroll(int key);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void fill();
    void addPart();

    /// The text, and how many characters of it are laid out.
    QString m_text;
    qsizetype m_shown = 0;
};
