#include "widgets/desktopPreference.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace
{

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");

} // namespace

void desktopPreference::watch()
{
    if (m_watches)
        return;
    m_watches = true;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // Registered late, it is no parameter that the toolkit knows, and the signal would not come.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));

    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    question << appearanceGroup << colorScheme;
    auto *answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isValid())
            take(reply.value());
    });
}

void desktopPreference::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group == appearanceGroup && key == colorScheme)
        take(value);
}

/// The answer to a question is a variant within a variant.
void desktopPreference::take(const QDBusVariant &value)
{
    QVariant content = value.variant();
    if (content.canConvert<QDBusVariant>())
        content = content.value<QDBusVariant>().variant();
    constexpr uint dark = 1;
    m_prefersDark = content.toUInt() == dark;
    emit told();
}
