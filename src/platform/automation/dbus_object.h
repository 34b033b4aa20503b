#pragma once

#include "tnv5/platform/automation/automation.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace tnv5::platform::automation {

/// An automation object in another process, spoken to over a bus. What it tells during a call comes as an
/// event before the call returns.
class TDBusObject final : public QObject, public TAutomationObject
{
    Q_OBJECT

public:
    /// @param owner the process that has the name now, as the bus calls it
    TDBusObject(const QDBusConnection& bus, const QString& name, const QString& owner);

    TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit) override;
    TValue get(std::u16string_view name) override;
    void put(std::u16string_view name, const TValue& value) override;
    void setEventHandler(TEventHandler handler) override;

private Q_SLOTS:
    void onSignal(const QDBusMessage& message);

private:
    QDBusMessage send(const QString& interface, std::u16string_view method, const QVariantList& values,
                      std::chrono::milliseconds limit);
    TValue valuesOf(const QDBusMessage& reply, TArguments& arguments, std::chrono::milliseconds limit) const;
    std::u16string trouble(const QDBusMessage& reply, std::chrono::milliseconds limit) const;

    QDBusConnection FBus;
    QString FName;
    QString FOwner;
    TEventHandler FHandler;
    bool FListening = false;
};

} // namespace tnv5::platform::automation
