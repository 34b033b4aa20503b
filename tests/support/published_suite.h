#pragma once

#include "support/published.h"
#include "tnv5/platform/component.h"

#include <QPointer>

namespace tnv5::tests {

/// What holds for the properties of every component, and for its owner. A room gives a struct:
///
///     using Component = ...;
///     static TPublishedTable table();
///
/// and says INSTANTIATE_TYPED_TEST_SUITE_P(Name, Published, TItsStruct).
template <class Room>
class Published : public ::testing::Test
{
protected:
    const TPublishedTable table = Room::table();
};

TYPED_TEST_SUITE_P(Published);

TYPED_TEST_P(Published, StandInTheirOrder)
{
    expectPublished(TypeParam::Component::staticMetaObject, this->table);
}

TYPED_TEST_P(Published, HaveTheirTypes)
{
    expectTypes(TypeParam::Component::staticMetaObject, this->table);
}

TYPED_TEST_P(Published, HaveTheirDefaults)
{
    const typename TypeParam::Component component;
    expectDefaults(component, this->table);
    EXPECT_FALSE(component.Designing());
}

TYPED_TEST_P(Published, KeepWhatIsWrittenEachItsOwn)
{
    typename TypeParam::Component component;
    expectKeepsNumbers(component, this->table);
}

TYPED_TEST_P(Published, OwnerFreesTheComponent)
{
    auto owner = std::make_unique<QObject>();
    const QPointer<QObject> component = new typename TypeParam::Component(owner.get());
    EXPECT_EQ(component->parent(), owner.get());
    owner.reset();
    EXPECT_TRUE(component.isNull());
}

TYPED_TEST_P(Published, DesigningIsInheritedFromTheOwner)
{
    const auto designed = [] {
        const platform::TDesignScope designing;
        return std::make_unique<typename TypeParam::Component>();
    }();
    EXPECT_TRUE(designed->Designing());
    const auto* child = new typename TypeParam::Component(designed.get());
    EXPECT_TRUE(child->Designing());
    QObject owner;
    child = new typename TypeParam::Component(&owner);
    EXPECT_FALSE(child->Designing());
}

REGISTER_TYPED_TEST_SUITE_P(Published, StandInTheirOrder, HaveTheirTypes, HaveTheirDefaults,
                            KeepWhatIsWrittenEachItsOwn, OwnerFreesTheComponent,
                            DesigningIsInheritedFromTheOwner);

/// The events of a controller are properties: written, called by what `play` does to it, read back and
/// called again.
/// @param expected the names of the events that are called, in their order
template <class CheckStatus, class CheckSql, class GetImg, class Controller>
void expectEventsAsProperties(Controller& controller, const std::function<void()>& play,
                              const QString& expected)
{
    QStringList called;
    const auto assign = [&]<class Event>(const char* property, const QString& name) {
        EXPECT_TRUE(controller.setProperty(
            property, QVariant::fromValue<Event>([&called, name](auto&&...) { called << name; })))
            << property;
    };
    const auto read = [&]<class Event>(const char* property) {
        const QVariant value = controller.property(property);
        EXPECT_TRUE(value.isValid()) << property;
        return value.value<Event>();
    };
    assign.template operator()<platform::TLogEvent>("OnLog", QStringLiteral("log"));
    assign.template operator()<platform::TLogEvent>("OnError", QStringLiteral("error"));
    assign.template operator()<GetImg>("OnGetImg", QStringLiteral("img"));
    assign.template operator()<CheckStatus>("OnCheckStatus", QStringLiteral("status"));
    assign.template operator()<CheckSql>("OnCheckSQL", QStringLiteral("check"));
    play();
    EXPECT_EQ(called.join(u' ').toStdString(), expected.toStdString());
    called.clear();
    read.template operator()<platform::TLogEvent>("OnError")(&controller, QStringLiteral("x"));
    read.template operator()<platform::TLogEvent>("OnLog")(&controller, QStringLiteral("x"));
    EXPECT_EQ(called.join(u' ').toStdString(), "error log");
    EXPECT_TRUE(read.template operator()<GetImg>("OnGetImg"));
    EXPECT_TRUE(read.template operator()<CheckStatus>("OnCheckStatus"));
    EXPECT_TRUE(read.template operator()<CheckSql>("OnCheckSQL"));
}

} // namespace tnv5::tests
