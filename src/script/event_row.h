#pragma once

#include "tnv5/script/binding.h"
#include "tnv5/script/event_types.h"

namespace tnv5::script {

/// The row of an event, made from its type.
template <class Event, class... Params>
TEventType eventRow(std::tuple<Params...>* signature)
{
    return {QMetaType::fromType<Event>(), scriptParams(signature), [](TScriptHandler handler) -> QVariant {
                if (!handler) {
                    return QVariant::fromValue(Event());
                }
                return QVariant::fromValue(Event([handler = std::move(handler)](Params... params) {
                    QVariantList args{TScriptValue<std::remove_cvref_t<Params>>::to(params)...};
                    handler(args);
                    qsizetype next = 0;
                    const auto writeBack = [&args, &next]<class Param>(auto& param) {
                        const QVariant& value = args[next++];
                        if constexpr (isReference<Param>) {
                            param = TScriptValue<std::remove_cvref_t<Param>>::from(value);
                        }
                    };
                    (writeBack.template operator()<Params>(params), ...);
                }));
            }};
}

template <class Event>
TEventType eventRow()
{
    return eventRow<Event>(static_cast<typename TSignatureOf<Event>::TParams*>(nullptr));
}

} // namespace tnv5::script
