#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <vector>

namespace tnv5::designer {

/// A property as a form author sees it, with a value that is not its first one.
struct TExpectedProperty
{
    const char* name;
    QVariant value;
    /// For an enumeration: the value's name in the form file.
    const char* key = nullptr;
};

struct TExpectedTile
{
    const char* component;
    const char* nameSpace;
    const char* objectName;
    std::vector<TExpectedProperty> properties;

    QString title() const { return QString::fromLatin1(component); }
    QString componentClass() const { return QStringLiteral("tnv5::%1::%2").arg(nameSpace, component); }
    QString tileClass() const { return QStringLiteral("tnv5::designer::%1Tile").arg(component); }
    QStringList names() const
    {
        QStringList names;
        for (const TExpectedProperty& property : properties) {
            names.append(QString::fromLatin1(property.name));
        }
        return names;
    }
};

/// The seven, in their order, with all that a form can hold, in its order.
inline const std::vector<TExpectedTile>& expectedTiles()
{
    static const std::vector<TExpectedTile> tiles{
        {"TSwitchDevice",
         "switching",
         "switchDevice",
         {{"pingdelay", 11},
          {"TimeDelayOpen", 12},
          {"TimeOut", 13},
          {"Server", "desk-1"},
          {"Port", 4001},
          {"RemoutDevice", 2, "tnv5::controller::PodClient"}}},
        {"TTurnStyler",
         "panel",
         "turnStyler",
         {{"IniSection", "Gates"},
          {"IniFile", "club.ini"},
          {"DefaultImage", 3},
          {"ASelectedIndex", 4},
          {"ButtonSize", 48}}},
        {"TTurnStylerDevice",
         "turnstile",
         "turnStylerDevice",
         {{"DeviceList", QStringList{"01A", "02B"}},
          {"RelayOpen", 21},
          {"RelayClose", 22},
          {"RelayOpenDoor", 23},
          {"RelayCloseDoor", 24},
          {"TimeDelayOpen", 25},
          {"TimeOut", 26},
          {"DoorIndex", "7"},
          {"Server", "desk-2"},
          {"Port", 4002},
          {"RemoutDevice", 1, "tnv5::controller::podServer"}}},
        {"TDeviceConnector",
         "connector",
         "deviceConnector",
         {{"ConnectorType", 1, "tnv5::connector::podComPort"}, {"IsConnected", false}}},
        {"TTurnStylerDeviceD24",
         "d24",
         "turnStylerDeviceD24",
         {{"CheckCross", true},
          {"pingdelay", 31},
          {"CheckET", true},
          {"RelayOpen", 32},
          {"RelayClose", 33},
          {"RelayOpenDoor", 34},
          {"RelayCloseDoor", 35},
          {"TimeDelayOpen", 36},
          {"TimeOut", 37},
          {"Server", "desk-3"},
          {"Port", 4003},
          {"RemoutDevice", 1, "tnv5::controller::podServer"}}},
        {"TScalesDevice",
         "scales",
         "scalesDevice",
         {{"LastWeight", 1250}, {"IDLang", 2}, {"ScalesType", 5}, {"SendInterval", 333}}},
        {"TBankPOS",
         "bank",
         "bankPOS",
         {{"PosType", 1},
          {"logfile", "pos.log"},
          {"log", true},
          {"ComPort", 9},
          {"ComPortRate", 19200},
          {"IP", "10.0.0.7"},
          {"IPPort", 2001},
          {"TimeOut", 41},
          {"Language", 2},
          {"RRN", "rrn"},
          {"TransactionID", "transaction"},
          {"AuthID", "auth"},
          {"PAN", "pan"},
          {"IssuerName", "issuer"},
          {"MerchantID", "merchant"},
          {"TerminalID", "terminal"},
          {"DeviceModelName", "model"},
          {"DeviceSerialNumber", "serial"},
          {"DeviceSoftVer", "software"},
          {"DeviceTerminalID", "device"},
          {"LibVersion", "library"},
          {"TotalsDebitAmt", "1"},
          {"TotalsDebitNum", "2"},
          {"TotalsCreditAmt", "3"},
          {"TotalsCreditNum", "4"},
          {"TotalsCancelledAmt", "5"},
          {"TotalsCancelledNum", "6"}}},
    };
    return tiles;
}

/// Value of a property, the number of it for an enumeration.
inline QVariant valueOf(const QObject& object, const TExpectedProperty& property)
{
    const QVariant value = object.property(property.name);
    return property.key == nullptr ? value : QVariant(value.toInt());
}

} // namespace tnv5::designer
