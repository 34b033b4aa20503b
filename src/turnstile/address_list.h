#pragma once

#include <QSet>
#include <QStringList>

namespace tnv5::turnstile {

/// Addresses in the order in which they were added; found without searching.
class TAddressList
{
public:
    const QStringList& list() const { return FList; }
    bool contains(const QString& address) const { return FSet.contains(address); }

    void assign(const QStringList& addresses)
    {
        FList = addresses;
        FSet = QSet<QString>(addresses.begin(), addresses.end());
    }

    void add(const QString& address)
    {
        FList.append(address);
        FSet.insert(address);
    }

private:
    QStringList FList;
    QSet<QString> FSet;
};

} // namespace tnv5::turnstile
