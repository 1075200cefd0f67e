// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmabstractworker.h"
#include "core/model/nodes/cmnodes.h"

/// A worker that keeps its state in nodes: routes every request to the node of its path.
class ORVA_API CMNodesWorker : public CMAbstractWorker
{
    Q_OBJECT
public:
    /// `config` is this worker's part of the host's configuration; `name` is the worker's own name.
    CMNodesWorker(const QVariantHash& config, const QString& name, QObject* parent = nullptr);

    /// The worker's name, as the log shows it.
    [[nodiscard]] const QString& name() const { return m_name; }
    /// The host's configuration of this worker; empty where there is none.
    [[nodiscard]] const QVariantHash& config() const { return m_config; }
    /// The container in which the worker creates its nodes.
    [[nodiscard]] CMNodes& nodes() { return m_nodes; }
    /// The same for who only looks.
    [[nodiscard]] const CMNodes& nodes() const { return m_nodes; }

    void trace() override;
    [[nodiscard]] QVector<CMNodeInfo> nodeInfos() const override;
    [[nodiscard]] bool isSecret(const CMPath& path) const override;

private:
    bool route(const CMPath& path, const CMRequest& request) override;

    QVariantHash m_config;
    QString m_name;
    CMNodes m_nodes;
};
