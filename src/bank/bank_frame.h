#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

/// The frames of a bank terminal on a serial line: STX, fields separated by FS, ETX, check byte. A packet is
/// text here, one character a byte.
namespace tnv5::bank {

constexpr char16_t kStx = 0x02;
constexpr char16_t kEtx = 0x03;
constexpr char16_t kEot = 0x04;
constexpr char16_t kEnq = 0x05;
constexpr char16_t kFs = 0x1C;

/// Acknowledgements, one byte each. The negative one is printable and no NAK; intended.
constexpr char kAccepted = 0x06;
constexpr char kRefused = '!';

// Tags of the fields.
inline const QString kTagCardNo = QStringLiteral("01=");
inline const QString kTagCardHolder = QStringLiteral("02=");
inline const QString kTagOperation = QStringLiteral("03=");
inline const QString kTagCardType = QStringLiteral("04=");
inline const QString kTagAmount = QStringLiteral("05=");
inline const QString kTagAnswer = QStringLiteral("06=");
inline const QString kTagBankType = QStringLiteral("10=");
inline const QString kTagDiscountSent = QStringLiteral("41="); // for all versions; intended

/// Position of the last STX, counted from 1; 0: none.
qsizetype frameStart(const QByteArray& buffer);

/// Position of the last byte of a packet that begins with the buffer, counted from 1; 0: more must come.
///
/// It is the byte behind the last ETX. Where the last ETX is the last byte of all, it is the check byte of an
/// earlier ETX, or the check byte is still to come. An EOT with no ETX behind it ends the packet itself.
qsizetype frameEnd(const QByteArray& buffer);

/// Whether what stands behind the first ETX is exactly the check byte: the XOR of everything behind the first
/// character up to and including that ETX. False without an ETX.
bool isSound(QStringView packet);

/// What a packet is; the first that fits, in this order.
enum class TPacketKind { AmountRequest, Answer, CardRead, EndOfDialogue, Unknown };
TPacketKind kindOf(QStringView packet);

/// The value behind the first occurrence of a tag, up to the next FS or ETX; 1000 characters are looked at,
/// and all of them are the value when they hold neither. Empty when the tag is absent.
/// Example: the tag "06=" of "06=00", FS, "10=1" has the value "00".
QString valueOf(QStringView packet, QStringView tag);

/// An amount as the line has it: "0" in front up to 12 characters; a longer one stays as it is.
/// A negative one is padded as text. Examples: 5 gives "000000000005", -5 gives "0000000000-5".
QString padded(qint64 amount);

/// The host's amount message; the discount is sent only when it is greater than 0.
/// Example: amount 1250 is STX, "05=000000001250", ETX, 0x3D.
QString amountFrame(int amount, int discount);

} // namespace tnv5::bank
