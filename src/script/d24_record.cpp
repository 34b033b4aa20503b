#include "tnv5/script/d24_record.h"

#include "tnv5/platform/errors.h"
#include "tnv5/script/convert.h"

#include <algorithm>
#include <array>

namespace tnv5::script {

using d24::TRFidInfo;

namespace {

/// A field by its name.
struct TField
{
    const char* name;
    QVariant (*get)(const TRFidInfo& record);
    void (*set)(TRFidInfo& record, const QVariant& value);
};

template <auto Member>
constexpr TField field(const char* name)
{
    return {name,
            [](const TRFidInfo& record) {
                using T = std::remove_cvref_t<decltype(record.*Member)>;
                return TScriptValue<T>::to(record.*Member);
            },
            [](TRFidInfo& record, const QVariant& value) {
                using T = std::remove_cvref_t<decltype(record.*Member)>;
                record.*Member = TScriptValue<T>::from(value);
            }};
}

constexpr std::array kFields{
    field<&TRFidInfo::IP>("IP"),
    field<&TRFidInfo::DeviceType>("DeviceType"),
    field<&TRFidInfo::CardNumber>("CardNumber"),
    field<&TRFidInfo::Device>("Device"),
    field<&TRFidInfo::Status>("Status"),
    field<&TRFidInfo::StatusHard>("StatusHard"),
    field<&TRFidInfo::Starttime>("Starttime"),
    field<&TRFidInfo::Img>("Img"),
    field<&TRFidInfo::sys>("sys"),
    field<&TRFidInfo::InfoMess>("InfoMess"),
    field<&TRFidInfo::Command>("Command"),
    field<&TRFidInfo::CommandAdd>("CommandAdd"),
    field<&TRFidInfo::CRC>("CRC"),
    field<&TRFidInfo::Finish>("Finish"),
    field<&TRFidInfo::CRCtime>("CRCtime"),
};

const TField& fieldNamed(const QString& name)
{
    const auto* const found = std::find_if(
        kFields.begin(), kFields.end(), [&](const TField& row) { return name == QLatin1String(row.name); });
    if (found == kFields.end()) {
        throw platform::EConvertError("TRFidInfo has no field '" + name + "'");
    }
    return *found;
}

class TD24Record final : public TRecordWrapper
{
public:
    explicit TD24Record(TRFidInfo record) : FRecord(std::move(record)) {}

    QStringList Fields() const override
    {
        QStringList names;
        for (const TField& row : kFields) {
            names += QString::fromLatin1(row.name);
        }
        return names;
    }
    QVariant Value(const QString& field) const override { return fieldNamed(field).get(FRecord); }
    void SetValue(const QString& field, const QVariant& value) override
    {
        fieldNamed(field).set(FRecord, value);
    }

    const TRFidInfo& record() const { return FRecord; }

private:
    TRFidInfo FRecord;
};

} // namespace

QVariant ConvertTRFidInfoToVariant(const TRFidInfo& Rec)
{
    return QVariant::fromValue(PRecordWrapper(std::make_shared<TD24Record>(Rec)));
}

void ConvertVariantToTRFidInfo(const QVariant& V, TRFidInfo& Rec)
{
    if (const auto* const wrapper = dynamic_cast<const TD24Record*>(V.value<PRecordWrapper>().get())) {
        Rec = wrapper->record();
    }
}

TScriptRecord d24Record()
{
    return {"TRFidInfo", [] { return ConvertTRFidInfoToVariant({}); },
            [](const void* rec) { return ConvertTRFidInfoToVariant(*static_cast<const TRFidInfo*>(rec)); },
            [](const QVariant& value, void* rec) {
                ConvertVariantToTRFidInfo(value, *static_cast<TRFidInfo*>(rec));
            }};
}

} // namespace tnv5::script
