#include "bank_fixture.h"

namespace tnv5::tests {

QByteArray fields(const QByteArrayList& list)
{
    return list.join('\x1C');
}

QString packet(const QByteArray& bytes)
{
    return logged(QStringLiteral("Operation ") + QString::fromLatin1(bytes));
}

QString told(const QString& status, const QStringList& values, bool apply)
{
    return QStringLiteral("%1 %2 apply=%3").arg(status, values.join(u'|')).arg(int(apply));
}

QString bare(const QString& status, bool apply)
{
    return told(status, {{}, {}, {}, {}, {}, {}, {}, QStringLiteral("0")}, apply);
}

TBankFixture::TBankFixture()
{
    pos->SetIDLang(2);
    pos->SetPosType(2);
    pos->SetTimeOut(1);
    pos->SetCodeOk(QStringLiteral("00;10;"));
    pos->SetCodeError(QStringLiteral("05;51;"));
    port->SetPort(QStringLiteral("COM7"));
    pos->SetComport(port.get());
    attach();
}

void TBankFixture::attach()
{
    trace.attach(*pos);
    const TComponent* const expected = pos.get();
    pos->SetOnRequestOperation([this, expected](TComponent* Sender, const QString& CardNo,
                                                const QString& CardType, const QString& CardHolder,
                                                const QString& Operation, const QString& Answer,
                                                const QString& BankType, bool& Apply, const QString& Status,
                                                const QString& DiscountType, const QString& Discount) {
        EXPECT_EQ(Sender, expected);
        const QString status = Status;
        const QStringList values = {CardNo, CardType, CardHolder,   Operation,
                                    Answer, BankType, DiscountType, Discount};
        const QString line = told(status, values, Apply);
        if (status == u"START") {
            Apply = acceptCard;
        } else if (status == u"GET") {
            Apply = acceptAnswer;
        }
        if (OnApply) {
            OnApply(status, Apply);
        }
        trace.add(line);
    });
    pos->SetOnRequestAmount([this, expected](TComponent* Sender, int& Amount, int& Discount, bool& Apply) {
        EXPECT_EQ(Sender, expected);
        const QString line =
            QStringLiteral("amount %1 %2 apply=%3").arg(Amount).arg(Discount).arg(int(Apply));
        Amount = amount;
        Discount = discount;
        Apply = acceptAmount;
        trace.add(line);
    });
}

void TBankFixture::sendAmount()
{
    feed(kAskAmount);
    trace.take();
}

} // namespace tnv5::tests
