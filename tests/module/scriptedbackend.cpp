#include "scriptedbackend.h"

bool ScriptedBackend::command(const QString& name)
{
    commands << name;
    if (onCommand)
        onCommand(name);
    return !refused.contains(name);
}

bool ScriptedBackend::startWps(const QString& name, const CMReply<OrvaNetworkInterface>& reply)
{
    const bool started = command(name);
    if (started)
        wpsReply = reply;
    return started;
}

bool ScriptedBackend::scanNetworks()
{
    return command(QStringLiteral("scanNetworks"));
}

bool ScriptedBackend::applyProfile(const OrvaNetworkProfile& profile)
{
    profiles << profile;
    return command(QStringLiteral("applyProfile"));
}

bool ScriptedBackend::disconnect()
{
    return command(QStringLiteral("disconnect"));
}

bool ScriptedBackend::forceWifiReconnect()
{
    return command(QStringLiteral("forceWifiReconnect"));
}

bool ScriptedBackend::performWpsPbc(const CMReply<OrvaNetworkInterface>& reply)
{
    return startWps(QStringLiteral("performWpsPbc"), reply);
}

bool ScriptedBackend::performWpsPin(const QString& pin, const CMReply<OrvaNetworkInterface>& reply)
{
    wpsPin = pin;
    return startWps(QStringLiteral("performWpsPin"), reply);
}

bool ScriptedBackend::startSoftAp(const OrvaNetworkProfileSoftApSettings& settings)
{
    startedSoftAps << settings;
    return command(QStringLiteral("startSoftAp"));
}

bool ScriptedBackend::stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings)
{
    stoppedSoftAps << settings;
    return command(QStringLiteral("stopSoftAp"));
}
