#include "tnv5/connector/networked_controller.h"

#include "tnv5/common/elapsed.h"
#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"
#include "tnv5/connector/connector_texts.h"
#include "tnv5/platform/code_page.h"

namespace tnv5::connector {

namespace {

constexpr int kPingIntervalMs = 2000;

} // namespace

TNetworkedController::TNetworkedController(QObject* AOwner, const controller::TRemoteFamily& family,
                                           int sweepIntervalMs)
    : TControllerDevice(AOwner, family, sweepIntervalMs)
{
    if (Designing()) {
        return;
    }
    PingTimer = std::make_unique<platform::TTimer>();
    PingTimer->SetInterval(kPingIntervalMs);
    PingTimer->OnTimer = [this](platform::TTimer* sender) { DevicePingTime(sender); };
    PingTimer->SetEnabled(true);
}

TNetworkedController::~TNetworkedController()
{
    if (FConnector) {
        FConnector->SetOnGetData(nullptr);
    }
}

void TNetworkedController::SetConnector(TDeviceConnector* Value)
{
    const QPointer<TDeviceConnector> old = FConnector;
    FConnector = Value;
    if (Designing()) {
        return;
    }
    if (Value != nullptr) {
        // a connector that was set before keeps calling until someone else attaches to it, and may outlive
        // this
        Value->SetOnGetData(
            [self = QPointer<TNetworkedController>(this)](TComponent* sender, const QString& line) {
                if (self) {
                    self->OnConnectorData(sender, line);
                }
            });
    } else if (old) {
        old->SetOnGetData(nullptr);
    }
}

QVariantList TNetworkedController::DeviceListValues() const
{
    QVariantList values;
    for (int index = 0; index < FDeviceList.size(); ++index) {
        const RDeviceList entry = FDeviceList.at(index);
        values << QVariantMap{{QStringLiteral("IP"), entry->IP},
                              {QStringLiteral("Device"), entry->Device},
                              {QStringLiteral("DeviceType"), entry->DeviceType},
                              {QStringLiteral("Pingtime"), entry->Pingtime}};
    }
    return values;
}

void TNetworkedController::OnConnectorData(TComponent* Sender, const QString& AMess)
{
    Q_UNUSED(Sender)
    p_hw_ProtocolIn(AMess);
}

bool TNetworkedController::takeLine(const QString& line)
{
    if (FLogEvent) {
        Fire(FLogEvent, common::Joined(kReadFromPortLog, line));
    }
    if (role() == controller::podServer) {
        echo(common::LogMessage(common::kReadFromPort + line));
    }
    if (role() != controller::PodClient) {
        return true;
    }
    echo(line); // without a link the line is lost; intended
    return false;
}

RDeviceList TNetworkedController::notePing(const QString& ip, const QString& device,
                                           const QString& deviceType)
{
    const RDeviceList known = FDeviceList.at(FDeviceList.find(ip, device));
    if (!known) {
        return FDeviceList.add(ip, device, deviceType);
    }
    known->Pingtime = platform::TimeOfDay();
    return known;
}

void TNetworkedController::refreshPing(QStringView ip, QStringView device)
{
    if (const RDeviceList entry = FDeviceList.at(FDeviceList.find(ip, device))) {
        entry->Pingtime = platform::TimeOfDay();
    }
}

void TNetworkedController::DevicePingTime(TComponent* Sender)
{
    Q_UNUSED(Sender)
    Operation([this] {
        const int count = FDeviceList.size();
        for (int index = 0; index < count; ++index) {
            const RDeviceList entry = FDeviceList.at(index);
            if (common::ElapsedMoreThan(entry->Pingtime, platform::TimeOfDay(), fpingdelay)) {
                reportPing(*entry, kNoPing);
            }
        }
    });
}

void TNetworkedController::SendToMonitor(const QByteArray& AMess)
{
    Operation([this, text = AMess] { sendToMonitor(text); });
}

bool TNetworkedController::lineReady()
{
    bool ready = false;
    CallOut([&] { ready = FConnector && FConnector->GetConnected(); });
    return ready;
}

QString TNetworkedController::send(const QString& command)
{
    if (!FConnector) { // a handler has destroyed it meanwhile
        throw platform::Exception(common::kPortNotOpen);
    }
    QString result;
    CallOut([&] { result = FConnector->SendCommand(command); });
    return result;
}

} // namespace tnv5::connector
