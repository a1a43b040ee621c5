#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

/// The appearance settings: one set for the whole process, with fixed defaults that every start begins
/// with. `receiver` derives from this class, so that `receiver::m_labelFont` names a setting; widgets
/// include this header alone. The configuration command is the only writer. Everything runs on the GUI
/// thread. Lengths and positions are screen pixels.
class appearance
{
public:
    /// Size of the screen that the progress dialog is centred on.
    inline static int m_desktopWidth = 640;
    inline static int m_desktopHeight = 480;
    /// Added to every position of the dialog and of the busy window.
    inline static int m_paintOffsetX = 0;
    inline static int m_paintOffsetY = 0;
    /// Top-left corner of the busy window; while one of them is negative the window is never shown.
    inline static int m_busyXpos = -1;
    inline static int m_busyYpos = -1;
    /// Size of the busy window; 0 or less takes the image's own.
    inline static int m_busyWidth = -1;
    inline static int m_busyHeight = -1;

    /// Image file of the busy window; a relative path starts at the working directory.
    static QString m_busyPixmap;
    static QString m_windowTitle;
    /// Image files of each new dialog's background and icon; a file that does not load leaves none.
    static QString m_windowPixmap;
    static QString m_windowIcon;

    static QFont m_labelFont;
    /// For bars without and with a text of their own.
    static QFont m_barNumFont;
    static QFont m_barLabelFont;
    static QFont m_buttonFont;

    // Every colour starts unset (invalid), which paints as opaque black.
    static QColor m_barColor;
    static QColor m_invertedNumberColor;
    static QColor m_busyBarColor;
    static QColor m_busyInvertedNumberColor;
    static QColor m_dialogBackgroundColor;
    static QColor m_dialogFrameColor;
    static QColor m_barBackgroundColor;
    static QColor m_busyBarBackgroundColor;
    static QColor m_shadowLightColor;
    static QColor m_shadowDarkColor;
    static QColor m_buttonBaseColor;
    static QColor m_focusFrameColor;

    /// Opacity of each new dialog's background, 0 (transparent) to 255.
    inline static int m_dialogBackgroundAlphaval = 200;
};

/// Pixels of a window's side at most, whatever is configured: the image of such a window takes 256 MiB.
inline constexpr int longestWindowSide = 8192;

/// The palette that all bars of the current dialog share; rebuilt by each construction of a dialog.
extern QPalette BAR_PALETTE;

/// Window mode of the progress dialog: shown again as it is (modal), or replaced by a fresh copy first.
inline bool m_modal_dialog = true;
inline constexpr Qt::WindowFlags m_modal_flags = Qt::CustomizeWindowHint | Qt::WindowStaysOnTopHint |
                                                 Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint;
inline constexpr Qt::WindowFlags m_nonmodal_flags = Qt::CustomizeWindowHint | Qt::FramelessWindowHint;
/// The flags that each new dialog is created with: one of the two sets above.
inline Qt::WindowFlags m_dialog_flags = m_modal_flags;
