#pragma once

#include <QMetaProperty>
#include <QVariant>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace tnv5::tests {

/// A row of the table of what a component publishes: a property's name, type and default.
struct TPublished
{
    enum TAccess { ReadWrite, ReadOnly };

    /// An event's default is an empty one of its type.
    template <class T>
    TPublished(const char* AName, const T& byDefault, TAccess AAccess = ReadWrite)
        : name(AName),
          type(QMetaType::fromType<T>()),
          access(AAccess),
          isDefault([byDefault](const QVariant& value) {
              if constexpr (requires { byDefault == byDefault; }) {
                  return value.value<T>() == byDefault;
              } else {
                  return !value.value<T>();
              }
          })
    {
    }

    const char* name;
    QMetaType type;
    TAccess access;
    std::function<bool(const QVariant& value)> isDefault;
};

using TPublishedTable = std::vector<TPublished>;

/// The class publishes exactly these, in this order, and each can be read and, if it may, written.
void expectPublished(const QMetaObject& meta, const TPublishedTable& table);

void expectTypes(const QMetaObject& meta, const TPublishedTable& table);

/// A new component has the defaults.
void expectDefaults(const QObject& component, const TPublishedTable& table);

/// What is written to a property is read back, and from none of the others.
void expectKeepsNumbers(QObject& component, const TPublishedTable& table);

} // namespace tnv5::tests
