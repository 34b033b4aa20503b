#pragma once

#include "tnv5/host/books/database.h"

#include <QString>
#include <optional>

namespace tnv5::cli {

// Exit codes of a payment beside those of all commands; 0: approved.
constexpr int kDeclined = 3;
constexpr int kCancelled = 4;
constexpr int kUnknown = 5;

/// A terminal with a library, as a person names it: "1" is the library of that number, "sim:1" a simulated
/// one, "sim:1:decline" one that ends like this.
struct TTerminalName
{
    int type = 0;
    bool simulated = false;
    QString end = QStringLiteral("approve");
};
std::optional<TTerminalName> terminalNameOf(const QString& text);

struct TTerminalPayment
{
    TTerminalName terminal;
    int cents = 0;
    int discount = 0;
    int merchant = 1;
    int comPort = 1;
    QString address; ///< "HOST:PORT" of a terminal on the network
    int stepMs = 400;
    bool trace = false;
};

/// Takes one payment, which is in the books from before it goes to the terminal; gives the exit code.
/// @throws host::EDatabase when it cannot be written down: nothing is sent then
int payAtTerminal(const TTerminalPayment& payment, host::TDatabase& club);

/// What is said of an outcome that the books have not taken.
inline QString notInTheBooks()
{
    return QStringLiteral("NOT IN THE BOOKS: the outcome of this payment");
}

} // namespace tnv5::cli
