#pragma once

#include <QString>
#include <QStringList>

namespace tnv5::desk {

/// Languages of the desk, by their codes: "en", "ru", "uk".
const QStringList& languages();

/// The language of this machine's user, as far as the desk has it; English else.
QString systemLanguage();

/// Gives the application a language, until the next call. English is what the texts in the program are.
/// @param code one of `languages` @return whether it is there
bool setLanguage(const QString& code);

} // namespace tnv5::desk
