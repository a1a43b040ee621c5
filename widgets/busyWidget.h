#pragma once

#include "widgets/progressStyle.h"

#include <QPixmap>
#include <QWidget>

class progressProcess;

/// The busy window: a small frameless window with the client's image (or a translucent white rectangle)
/// and, inside it, a slim vertical bar with the total percent. Without a position it can be in
/// the middle of the screen, with a wheel that turns in the theme's colours. Its callers place, show and hide
/// it.
class busyWidget : public QWidget
{
    Q_OBJECT

public:
    /// Built hidden, with the bar's colours and the image that the settings name at this moment.
    busyWidget();

    /// Loads the image and sizes the window and its bar from the settings; everything is computed from
    /// scratch. A missing file leaves no image and is logged.
    void setBusyPixmap(const QString &fileName);
    /// Shows `percent` (0 to 100) on the bar; a negative one hides the bar.
    void setBusyPercent(int percent);
    /// Moves the window to where the settings want it, offset included.
    void movePosition();
    /// Whether the settings give the window a place on the screen, as they must for it to come with the
    /// dialog.
    static bool hasPosition();
    /// Whether it comes in the middle of the screen when it is asked for by itself.
    static bool isCentred();

signals:
    /// A mouse button went down on the window.
    void pressed();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void takeColors();
    QSize loadPixmap(const QString &fileName);
    void takeCentralSize();
    void paintWheel(QPainter &painter) const;

    QPixmap m_icon;
    QRect m_imagePlace; ///< the whole window without an image
    progressStyle m_style;
    progressProcess *m_progr;
};
