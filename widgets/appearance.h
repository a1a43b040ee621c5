#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

/// Window flags of the two window modes: above everything and without the window manager (modal), or an
/// ordinary frameless window.
inline constexpr Qt::WindowFlags modalFlags = Qt::CustomizeWindowHint | Qt::WindowStaysOnTopHint |
                                              Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint;
inline constexpr Qt::WindowFlags nonmodalFlags = Qt::CustomizeWindowHint | Qt::FramelessWindowHint;

/// How dialogs place their children: in the fixed grid, or as the content asks for.
enum class windowLayout { grid, fitted };
/// Whether text lines of the fitted layout are markup.
enum class windowMarkup { off, on };
/// Whether the busy window has a place without a position: none, or the middle of the screen.
enum class busyPlace { none, centre };
/// Whole looks; `automatic` is light or dark, as the desktop prefers.
enum class windowTheme { none, light, dark, automatic };

/// The appearance settings, with the defaults that every start begins with. Lengths and positions are
/// screen pixels. Every colour starts unset (invalid), which paints as opaque black.
struct appearanceSettings {
    /// Size of the screen that the progress dialog is centred on, and whether a client has told it: the
    /// fitted layout takes the real one until then.
    int m_desktopWidth = 640;
    int m_desktopHeight = 480;
    bool m_desktopIsKnown = false;
    /// Added to every position of the dialog and of the busy window.
    int m_paintOffsetX = 0;
    int m_paintOffsetY = 0;
    /// Top-left corner of the busy window; while one of them is negative the window is never shown.
    int m_busyXpos = -1;
    int m_busyYpos = -1;
    /// Where it is shown all the same, when a client asks for the window itself.
    busyPlace m_busyPlace = busyPlace::none;
    /// Size of the busy window; 0 or less takes the image's own.
    int m_busyWidth = -1;
    int m_busyHeight = -1;

    /// Image file of the busy window; a relative path starts at the working directory.
    QString m_busyPixmap = QStringLiteral("Busy.png");
    QString m_windowTitle = QStringLiteral("unknown");
    /// Image files of each new dialog's background and icon; a file that does not load leaves none.
    QString m_windowPixmap = QStringLiteral("unknown");
    QString m_windowIcon = QStringLiteral("unknown");

    QFont m_labelFont = font(8);
    /// For bars without and with a text of their own.
    QFont m_barNumFont = font(10);
    QFont m_barLabelFont = font(10);
    QFont m_buttonFont = font(8);

    QColor m_barColor;
    QColor m_invertedNumberColor;
    QColor m_busyBarColor;
    QColor m_busyInvertedNumberColor;
    QColor m_dialogBackgroundColor;
    QColor m_dialogFrameColor;
    QColor m_barBackgroundColor;
    QColor m_busyBarBackgroundColor;
    QColor m_shadowLightColor;
    QColor m_shadowDarkColor;
    QColor m_buttonBaseColor;
    QColor m_focusFrameColor;

    /// Text on the panel and the unfilled part of bars, and on buttons. Unset, it is black in the grid
    /// without a theme, else black or white (see theme.h).
    QColor m_panelTextColor;
    QColor m_buttonTextColor;

    /// Layout of each new dialog, and the least width of a fitted one.
    windowLayout m_windowLayout = windowLayout::grid;
    int m_leastWidth = 0;
    windowMarkup m_windowMarkup = windowMarkup::off;
    /// File or name of an icon that a fitted dialog shows beside its content; empty for none.
    QString m_windowImage;
    /// How much larger than usual the user wants the fitted layout.
    double m_scale = 1;
    /// The theme in force, whose colours and fonts are those above as far as nothing else was set later.
    windowTheme m_windowTheme = windowTheme::none;

    /// Opacity of each new dialog's background, 0 (transparent) to 255.
    int m_dialogBackgroundAlphaval = 200;

    /// Window mode of the progress dialog: shown again as it is (modal), or replaced by a fresh copy first.
    bool m_modal_dialog = true;

private:
    static QFont font(int points) { return {QStringLiteral("Arial"), points, QFont::Normal}; }
};

/// The one set of settings of the process. Its only writers are the configuration command and the themes; the
/// scale is the start's.
inline appearanceSettings appearance;

/// The palette that all bars of the current dialog share; rebuilt by each construction of a dialog, and when
/// the theme's colours change.
inline QPalette BAR_PALETTE;
