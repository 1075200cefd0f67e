// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networklistener.h"
#include "literals.h"

/// Drives a backend in the worker's place, and writes down what it reports: "eth0 up".
class PlayedListener final : public NetworkListener
{
public:
    QStringList heard;
    QStringList disconnecting;

    QString wiredInterface() const override { return "eth0"_s; }
    QString wirelessInterface() const override { return "wlan0"_s; }
    QStringList softapInterfaces() const override { return {"uap0"_s}; }
    QStringList disconnectingInterfaces() const override { return disconnecting; }
    void setLinkStatus(const QString& interface, bool up) override
    {
        heard << interface + (up ? " up"_s : " down"_s);
    }
    void setDisconnecting(const QString& interface) override { heard << interface + " leaves"_s; }
    void setCurrentCableStatus(bool connected) override
    {
        heard << (connected ? "cable in"_s : "cable out"_s);
    }
};
