#pragma once

#include <QMessageBox>

class scrolledText;

/// A box with a text and standard buttons, which looks and answers as the toolkit's. What the toolkit lacks:
/// a text that makes it outgrow the screen's work area scrolls inside it, and no button has an icon (the
/// toolkit has some for a few). Closing the window is the same as Escape.
class noticeBox : public QMessageBox
{
public:
    /// The text is shown as it came, without markup; of the longest, more than 100,000 characters, the
    /// beginning.
    noticeBox(const QString &title, const QString &text);

    /// Adds the button that the code, one of QMessageBox::StandardButton, stands for; the box owns it. Null
    /// for any other number, none of which adds a button.
    QPushButton *addStandard(int code);

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QSize roomOnScreen() const;
    void updateSize();
    bool isHopeless() const;
    bool fitsScreen();
    void scrollText();
    void shareScreen();

    QString m_text;
    /// Takes the place of the toolkit's label when the text scrolls; else null. A child.
    scrolledText *m_scrolledText = nullptr;
};
