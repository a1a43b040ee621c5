#pragma once

#include <QObject>

class QDBusVariant;

/// Whether the desktop's user prefers dark windows, as the settings portal tells over D-Bus: light where
/// there is no portal. Nothing here waits for an answer.
class desktopPreference : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks the portal, and listens to it from then on; later calls do nothing.
    void watch();
    bool prefersDark() const { return m_prefersDark; }

signals:
    /// The desktop has said what it is, which may be what it was.
    void told();

private slots:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void take(const QDBusVariant &value);

    bool m_watches = false;
    bool m_prefersDark = false;
};
