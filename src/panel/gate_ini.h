#pragma once

#include "tnv5/panel/gate_record.h"
#include "tnv5/platform/errors.h"

#include <QByteArray>
#include <optional>
#include <vector>

namespace tnv5::panel {

/// An ini file that cannot be read or written.
class EIniFile : public platform::Exception
{
public:
    using Exception::Exception;
};

constexpr int kMostGates = 100'000;                  ///< that are read from a file
constexpr qint64 kMostIniBytes = 64LL * 1024 * 1024; ///< of a file that is read or changed

/// The gates in one section of an ini file.
///
/// Sections and keys are found in any case, the first of several counts. Texts are trimmed; a number is an
/// optional minus and digits within 32 bits, anything else is 0.
/// @param content of the file: UTF-8 with or without a mark, or the code page
std::vector<TGateRecord> readGates(const QByteArray& content, const QString& section);

/// The file with these gates in the section, which is made at the end when there is none.
///
/// Everything else stays byte for byte: other sections, foreign keys, comments, blank lines, the kind of line
/// break, the encoding. Keys of gates above the new count are removed. A line break in a text becomes a
/// blank. When the code page lacks a character of the gates' texts, the whole becomes UTF-8 with a mark; also
/// when it would be taken for UTF-8 otherwise.
QByteArray writtenGates(const QByteArray& content, const QString& section,
                        const std::vector<TGateRecord>& gates);

/// Reads the gates from a file; none when there is no such file.
/// @throws EIniFile
std::optional<std::vector<TGateRecord>> loadGates(const QString& fileName, const QString& section);

/// Writes the gates to a file, which is made when there is none; folders are not. Until all of it is on the
/// disk, the old file is there, whatever happens meanwhile.
/// @throws EIniFile and leaves the file as it was
void saveGates(const QString& fileName, const QString& section, const std::vector<TGateRecord>& gates);

} // namespace tnv5::panel
