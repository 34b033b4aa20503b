#include "model/connector_model.h"
#include "model/connector_scenario.h"
#include "model/connector_stage.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <QVariant>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

namespace tnv5::connector::model {

namespace {

// Enough to reach every branch of the model, in about a second.
constexpr int kDefaultScenarios = 800;

/// A connector whose virtual functions can be overridden while a scenario runs.
class TWatchedConnector final : public TDeviceConnector
{
public:
    std::function<bool()> ConnectedHook;
    std::function<void(const QString& ip, const QString& line)> DirectHook;
    bool BaseConnected() { return TDeviceConnector::GetConnected(); }
    void BaseDirect(const QString& ip, const QString& line) { TDeviceConnector::SendDirectCommand(ip, line); }

    bool GetConnected() override
    {
        const auto hook = ConnectedHook;
        return hook ? hook() : BaseConnected();
    }
    void SendDirectCommand(const QString& ip, const QString& line) override
    {
        const auto hook = DirectHook; // destroyed with the connector while it runs
        hook ? hook(ip, line) : BaseDirect(ip, line);
    }
};

/// How things are made and unmade on the component's side.
class TRealSide
{
public:
    using Connector = TWatchedConnector;
    using Port = testkit::TMemoryPort;

    explicit TRealSide(const TScenario& scenario) : FClock(scenario.startMs)
    {
        const QByteArray page = scenario.cyrillic ? "windows-1251" : "ISO-8859-1";
        if (platform::codePage() != page) {
            platform::setCodePage(page);
        }
    }
    ~TRealSide() { platform::setExceptionHandler(std::exchange(FBefore, nullptr)); }
    TRealSide(const TRealSide&) = delete;
    TRealSide& operator=(const TRealSide&) = delete;

    void onUnhandled(std::function<void(const QString&)> handler)
    {
        FBefore = platform::setExceptionHandler(
            [handler = std::move(handler)](const QString& message, const std::exception_ptr&) {
                handler(message);
            });
    }
    void advance(qint64 ms) { FClock.advance(ms); }
    static Connector* newConnector(bool designing)
    {
        std::optional<platform::TDesignScope> scope;
        if (designing) {
            scope.emplace();
        }
        return std::make_unique<Connector>().release();
    }
    static Port* newPort() { return std::make_unique<Port>().release(); }
    static void destroy(QObject* object) { const std::unique_ptr<QObject> last(object); }
    static void setType(Connector& connector, int type)
    {
        connector.SetConnectorType(static_cast<TConnectorType>(type));
    }
    static bool isConnected(Connector& connector, bool byProperty)
    {
        return byProperty ? connector.property("IsConnected").toBool() : connector.GetConnected();
    }
    static void setConnected(Connector& connector, bool connected, bool byProperty)
    {
        byProperty ? void(connector.setProperty("IsConnected", connected))
                   : connector.SetConnected(connected);
    }
    static void portError(Port& port, const QString& message, qint64 osError, bool inside)
    {
        const auto kind = platform::TComExceptionKind::Resource;
        inside ? port.raiseErrorInside(kind, message, osError, "system's text")
               : port.raiseError(kind, message, osError, "system's text");
    }

private:
    testkit::TManualClock FClock;
    platform::TExceptionHandler FBefore;
};

/// The same on the model's side.
class TModelSide
{
public:
    using Connector = TModelConnector;
    using Port = TModelPort;

    TModelSide(const TScenario& scenario, TCoverage& coverage) : FWorld(coverage)
    {
        FWorld.nowMs = scenario.startMs;
        FWorld.cyrillic = scenario.cyrillic;
    }

    void onUnhandled(std::function<void(const QString&)> handler) { FWorld.unhandled = std::move(handler); }
    void advance(qint64 ms) { FWorld.nowMs += ms; }
    Connector* newConnector(bool designing)
    {
        return FConnectors.emplace_back(std::make_unique<Connector>(FWorld, designing)).get();
    }
    Port* newPort() { return FPorts.emplace_back(std::make_unique<Port>(FWorld)).get(); }
    static void destroy(Connector* connector) { connector->die(); }
    static void destroy(Port* port) { port->die(); }
    static void setType(Connector& connector, int type) { connector.SetConnectorType(type); }
    static bool isConnected(Connector& connector, bool) { return connector.GetConnected(); }
    static void setConnected(Connector& connector, bool connected, bool)
    {
        connector.SetConnected(connected);
    }
    static void portError(Port& port, const QString& message, qint64 osError, bool inside)
    {
        inside ? port.raiseErrorInside(message, osError) : port.raiseError(message, osError);
    }

private:
    TModelWorld FWorld;
    std::vector<std::unique_ptr<Port>> FPorts; // what was destroyed stays for calls under way
    std::vector<std::unique_ptr<Connector>> FConnectors;
};

/// Index of the first step that the two sides do not play alike, with both traces; none when they agree.
std::optional<std::size_t> firstDifference(const TScenario& scenario, TCoverage& coverage,
                                           std::string* traces = nullptr)
{
    TRealSide real(scenario);
    TModelSide model(scenario, coverage);
    TStage<TRealSide> realStage(real);
    TStage<TModelSide> modelStage(model);
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        const auto expected = modelStage.play(scenario.steps[i]);
        const auto actual = realStage.play(scenario.steps[i]);
        if (expected == actual) {
            continue;
        }
        if (traces != nullptr) {
            std::ostringstream out;
            const auto list = [&out](const char* title, const std::vector<std::string>& trace) {
                out << "  " << title << '\n';
                for (const auto& line : trace) {
                    out << "    " << line << '\n';
                }
            };
            list("expected", expected);
            list("actual", actual);
            *traces = out.str();
        }
        return i;
    }
    return std::nullopt;
}

/// Leaves out what the difference does not need.
TScenario shrunk(TScenario scenario)
{
    TCoverage unused;
    const auto differs = [&](const TScenario& candidate) {
        return firstDifference(candidate, unused).has_value();
    };
    scenario.steps.resize(*firstDifference(scenario, unused) + 1);
    for (std::size_t size = scenario.steps.size(); size > 0; size /= 2) {
        for (std::size_t at = 0; at + size <= scenario.steps.size();) {
            TScenario candidate = scenario;
            const auto first = candidate.steps.begin() + static_cast<std::ptrdiff_t>(at);
            candidate.steps.erase(first, first + static_cast<std::ptrdiff_t>(size));
            differs(candidate) ? void(scenario = candidate) : void(++at);
        }
    }
    for (std::size_t step = 0; step < scenario.steps.size(); ++step) {
        for (std::size_t i = scenario.steps[step].reactions.size(); i-- > 0;) {
            TScenario candidate = scenario;
            candidate.steps[step].reactions[i] = {};
            if (differs(candidate)) {
                scenario = candidate;
            }
        }
    }
    return scenario;
}

std::string explained(quint64 seed, const TScenario& scenario)
{
    TCoverage unused;
    std::string traces;
    const auto step = firstDifference(scenario, unused, &traces);
    std::ostringstream out;
    out << "seed " << seed << ", first difference in step " << *step << '\n' << traces;
    const TScenario least = shrunk(scenario);
    out << "shortest scenario found" << (least.cyrillic ? "" : " (ISO 8859-1)") << '\n';
    for (const TStep& each : least.steps) {
        out << "    " << shown(each) << '\n';
    }
    firstDifference(least, unused, &traces);
    out << traces;
    return out.str();
}

} // namespace

TEST(ConnectorModel, PlaysRandomScenariosLikeTheComponent)
{
    const int wanted = qEnvironmentVariableIntValue("TNV5_SCENARIOS");
    const int first = qEnvironmentVariableIntValue("TNV5_FIRST_SCENARIO");
    const int count = wanted > 0 ? wanted : kDefaultScenarios;
    TCoverage coverage;
    std::size_t steps = 0;
    for (int seed = first; seed < first + count; ++seed) {
        const TScenario scenario = makeScenario(quint64(seed));
        steps += scenario.steps.size();
        if (firstDifference(scenario, coverage)) {
            FAIL() << explained(quint64(seed), scenario);
        }
    }
    platform::setCodePage("windows-1251");
    std::cout << count << " scenarios, " << steps << " steps\n";
    for (const auto& [branch, times] : coverage.counts()) {
        if (wanted > 0) {
            std::cout << times << '\t' << branch << '\n';
        }
        // a few scenarios chosen by hand need not reach everything
        if (count >= kDefaultScenarios) {
            EXPECT_GT(times, 0) << "no scenario reaches: " << branch;
        }
    }
}

} // namespace tnv5::connector::model
