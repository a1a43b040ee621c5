#pragma once

#include "widgets/appearance.h"

#include <QObject>

#include <optional>

class desktopPreference;

/// The built-in looks. A theme writes all colours and fonts of the settings at once, as defaults that later
/// entries change. The automatic one follows the desktop: when its preference changes, what nobody has
/// changed meanwhile changes too, and so do the windows that are there.
class theme : public QObject
{
    Q_OBJECT

public:
    /// Lives as long as the application.
    static theme &instance();

    void apply(windowTheme which);
    /// Colour of a setting, that of the light theme where it is unset.
    static QColor colorOrLight(QColor appearanceSettings::*setting);

signals:
    /// The settings' colours have changed by themselves.
    void changed();

private:
    explicit theme(QObject *parent);
    void follow();

    desktopPreference *m_preference;
    bool m_isDark = false;
};

/// Colour of the text on a panel or a button whose colour is `background`: the one of the settings, else the
/// one that reads better.
QColor readableText(const QColor &setting, const QColor &background);
/// The same in the grid; unset, which means black, where there is neither a theme nor a setting.
QColor themedText(const QColor &setting, const QColor &background);

/// A bar's palette, with these colours of the text over its filled part, of that part and of the rest; where
/// a theme or a setting asks for it, the text over the rest and a panel that fits it besides.
QPalette barPalette(QPalette palette, const QColor &numbers, const QColor &fill, const QColor &background);

/// The palette of message boxes; nothing, for the toolkit's own, where there is no theme.
std::optional<QPalette> boxPalette();

/// How well text in one colour reads on the other: 1 (not at all) to 21 (black and white), by the formula of
/// the web's accessibility guidelines, where 4.5 is enough for text and 3 for shapes.
double contrast(const QColor &one, const QColor &other);

/// Black or white, whichever reads better on `background`.
QColor readableOn(const QColor &background);

/// `one` with a share, 0 to 1, of `other`.
QColor mixed(const QColor &one, const QColor &other, double share);
