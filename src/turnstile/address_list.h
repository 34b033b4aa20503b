#pragma once

#include <QSet>
#include <QStringList>
#include <algorithm>
#include <utility>

namespace tnv5::turnstile {

/// Addresses in the order in which they were added; those of the usual length are found without searching.
class TAddressList
{
public:
    const QStringList& list() const { return FList; }

    bool contains(QStringView address) const
    {
        return address.size() <= kUsualLength
                   ? FKeys.contains(keyOf(address))
                   : std::any_of(FList.begin(), FList.end(),
                                 [address](const QString& other) { return other == address; });
    }

    void assign(QStringList addresses) // a copy: it may be this very list
    {
        FList.clear();
        FKeys.clear();
        for (const QString& address : std::as_const(addresses)) {
            add(address);
        }
    }

    void add(const QString& address)
    {
        FList.append(address);
        if (address.size() <= kUsualLength) {
            FKeys.insert(keyOf(address));
        }
    }

private:
    static constexpr qsizetype kUsualLength = 3;

    /// Characters and length of a short address in one number, which is hashed faster than a text.
    static quint64 keyOf(QStringView address)
    {
        constexpr int kCharacterBits = 16;
        auto key = static_cast<quint64>(address.size());
        for (const QChar character : address) {
            key = key << kCharacterBits | character.unicode();
        }
        return key;
    }

    QStringList FList;
    QSet<quint64> FKeys;
};

} // namespace tnv5::turnstile
