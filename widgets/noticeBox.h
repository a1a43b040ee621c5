#pragma once

#include <QMessageBox>

class QLabel;
class scrolledText;

/// A box with a text and standard buttons, which looks and answers as the toolkit's. What the toolkit lacks:
/// the first line of several is bold; a text that makes it outgrow the screen's work area scrolls inside it;
/// words and buttons that need more width than the toolkit grants are not cut off; where a theme is in force
/// the box has its colours; and no button has an icon (the toolkit has some for a few). Closing the window is
/// the same as Escape.
class noticeBox : public QMessageBox
{
public:
    /// The text is shown as it came, without markup; of the longest, more than 100,000 characters, the
    /// beginning.
    noticeBox(const QString &title, const QString &text);

    /// Shows the picture of one of QMessageBox::Icon; none for any other number.
    void setPicture(int icon);
    /// Opens beside this window, in pixels of the screen, if there is room.
    void keepClearOf(const QRect &window) { m_clearOf = window; }

    /// Adds the button that the code, one of QMessageBox::StandardButton, stands for; the box owns it. Null
    /// for any other number, none of which adds a button.
    QPushButton *addStandard(int code);

protected:
    bool event(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void takeColors();
    void showText(const QString &text);
    int roomyWidth() const;
    void moveAside();
    QSize roomOnScreen() const;
    QLabel *label() const;
    int columnWidth() const;
    void useToolkitSize();
    void updateSize();
    bool widen();
    void breakLongWords();
    bool isHopeless() const;
    bool fitsScreen();
    void scrollText();
    void shareScreen();

    QString m_text;
    QRect m_clearOf;          ///< empty for none
    bool m_isWidened = false; ///< beyond the toolkit's size
    /// Takes the place of the toolkit's label when the text scrolls; else null. A child.
    scrolledText *m_scrolledText = nullptr;
};
