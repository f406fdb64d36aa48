#pragma once

#include "sdk/plugininterfacelive.h"
#include "tests/torture/lapledger.h"

#include <QPluginLoader>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

namespace torture {

/** A host of the plugin that looks at everything it gets and releases it. */
class Host {
public:
    using Clock = std::chrono::steady_clock;

    /** Loads and initializes the plugin; isReady() tells whether that worked. */
    explicit Host(const QString& pluginFile);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    [[nodiscard]] bool isReady() const { return m_source != nullptr; }
    [[nodiscard]] QString problem() const { return m_loader.errorString(); }
    [[nodiscard]] TLM::SDK::PluginInterfaceLive& source() { return *m_source; }

    /** One tick of the plugin, as its timer calls it. */
    void tick();

    /** Adds laps to this ledger from now on; null for none. */
    void writeTo(LapLedger* ledger) { m_ledger = ledger; }

    /**
     * The session's tick in the newest samples. Empty if they have none: the sample of a car that
     * begins a lap in that tick is still empty.
     */
    [[nodiscard]] std::optional<long long> newestTick() const { return m_newestTick; }

    [[nodiscard]] long long snapshots() const { return m_snapshots; }
    [[nodiscard]] int connections() const { return m_connections; }
    [[nodiscard]] int disconnections() const { return m_disconnections; }
    [[nodiscard]] Clock::time_point connectedAt() const { return m_connectedAt; }
    [[nodiscard]] Clock::time_point disconnectedAt() const { return m_disconnectedAt; }

    /** The number of samples and laps that came without a connection. */
    [[nodiscard]] int strays() const { return m_strays; }

private:
    void listen();
    void take(const TLM::SDK::Lap& lap);
    void take(const QList<TLM::SDK::Sample>& samples);

    QPluginLoader m_loader;
    std::unique_ptr<QObject> m_object;
    TLM::SDK::PluginInterfaceLive* m_source = nullptr;
    LapLedger* m_ledger = nullptr;
    std::optional<long long> m_newestTick;
    long long m_snapshots = 0;
    int m_connections = 0;
    int m_disconnections = 0;
    int m_strays = 0;
    Clock::time_point m_connectedAt;
    Clock::time_point m_disconnectedAt;
};

}  // namespace torture
