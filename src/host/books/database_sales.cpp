#include "tnv5/host/books/database_parts.h"

namespace tnv5::host {

namespace {

TSale saleFrom(const TRows& row)
{
    TSale sale;
    sale.id = row.value(0).toLongLong();
    sale.sold = toDateTime(row.value(1).toString());
    sale.card = row.value(2).toString();
    sale.member = row.value(3).toLongLong();
    sale.product = row.value(4).toString();
    sale.centsPerKg = row.value(5).toLongLong();
    sale.grams = row.value(6).toInt();
    sale.cents = row.value(7).toLongLong();
    return sale;
}

TPayment paymentFrom(const TRows& row)
{
    TPayment payment;
    payment.id = row.value(0).toLongLong();
    payment.began = toDateTime(row.value(1).toString());
    payment.ended = toDateTime(row.value(2).toString());
    payment.cents = row.value(3).toLongLong();
    payment.discount = row.value(4).toLongLong();
    payment.card = row.value(5).toString();
    payment.cardType = row.value(6).toString();
    payment.answer = row.value(7).toString();
    payment.outcome = toOutcome(row.value(8).toString()).value_or(TOutcome::Unknown);
    payment.reason = row.value(9).toString();
    return payment;
}

} // namespace

void TDatabase::setProduct(const QString& name, qint64 centsPerKg)
{
    F->setProduct.run({notNull(name), centsPerKg});
}

std::optional<qint64> TDatabase::priceOf(const QString& product)
{
    TRows rows = F->price.run({notNull(product)});
    return rows.next() ? std::optional(rows.value(0).toLongLong()) : std::nullopt;
}

void TDatabase::sell(TSale& sale)
{
    TWriteTransaction transaction(F->connection.database());
    const qint64 id = F->addSale
                          .run({toText(sale.sold), notNull(sale.card), sale.member, notNull(sale.product),
                                sale.centsPerKg, sale.grams, sale.cents})
                          .insertedId();
    F->charge.run({sale.cents, sale.member});
    transaction.commit();
    sale.id = id;
}

QList<TSale> TDatabase::salesAfter(qint64 id, int limit)
{
    return F->sales.run({id, limit}).all(saleFrom);
}

qint64 TDatabase::lastSale()
{
    return F->lastSale.run().number();
}

void TDatabase::writePayment(TPayment& payment)
{
    const QVariantList state = {notNull(toText(payment.ended)), notNull(payment.card),
                                notNull(payment.cardType),      notNull(payment.answer),
                                toText(payment.outcome),        notNull(payment.reason)};
    if (payment.id == 0) {
        payment.id =
            F->addPayment.run(QVariantList{toText(payment.began), payment.cents, payment.discount} + state)
                .insertedId();
    } else {
        F->changePayment.run(state + QVariantList{payment.id});
    }
}

QList<TPayment> TDatabase::paymentsAfter(qint64 id, int limit)
{
    return F->payments.run({id, limit}).all(paymentFrom);
}

QList<TPayment> TDatabase::paymentsUnderWay()
{
    return F->paymentsUnderWay.run().all(paymentFrom);
}

qint64 TDatabase::lastPayment()
{
    return F->lastPayment.run().number();
}

} // namespace tnv5::host
