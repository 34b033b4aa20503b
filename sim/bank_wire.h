#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <optional>

/// The wire format of a bank card terminal, as the terminal sees it.
namespace tnv5::sim {

constexpr char kBankStx = 0x02;
constexpr char kBankEtx = 0x03;
constexpr char kBankAck = 0x06;
constexpr char kBankRefusal = '!'; // no NAK: the host says it like this

/// STX, body, ETX and the XOR of body and ETX.
QByteArray bankFrame(const QByteArray& body);
/// A body of fields, each such as "01=4111111111111111".
QByteArray bankFields(const QByteArrayList& fields);

/// What the host wants, in the smallest unit.
struct TBankAmount
{
    qint64 Amount = 0;
    qint64 Discount = 0;
};

/// Reads a frame from STX to check byte; nothing when the check byte or anything else in it is wrong.
std::optional<TBankAmount> readBankAmount(const QByteArray& frame);

} // namespace tnv5::sim
