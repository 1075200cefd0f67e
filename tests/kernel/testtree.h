// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "values.h"

#include "core/orva.h"

#include <QtTest>

/// A node tree that is one worker: the root, in which a test creates the nodes of everybody else.
class TestTree : public CMNodesWorker
{
public:
    TestTree()
        : CMNodesWorker({}, "test"_s)
    {
        CMSetRoot(this);
    }
    ~TestTree() override { CMSetRoot(nullptr); }

    /// Creates a value node without a value.
    CMValueNode* addValue(const CMPath& path) { return CMValueNode::create(nodes(), path); }

    /// Creates an activate node that answers with success.
    void addActivation(const CMPath& path)
    {
        const auto count = [this, path](const CMSetDataRequest& request) {
            ++m_activations[path];
            request.answer();
        };
        connect(CMActivateNode::create(nodes(), path), &CMActivateNode::invoked, this, count);
    }

    /// The number of activations of a node of `addActivation()`.
    [[nodiscard]] int activations(const CMPath& path) const { return m_activations.value(path); }
    /// The same, and begins again at 0.
    [[nodiscard]] int takeActivations(const CMPath& path) { return m_activations.take(path); }

private:
    QHash<CMPath, int> m_activations;
};

/// The end of an activation: the error's name and message, "/" for success, "none" without an
/// answer.
inline QString outcome(CMAbstractWorker& worker, const CMPath& path, const OrvaValue& value = {})
{
    const auto reply = CMReply<QVariant>::create();
    worker.invoke(path, value, reply);
    const bool answered = QTest::qWaitFor([&] { return reply.isFinished(); });
    const CMError error = reply.error();
    return answered ? error.name() + QLatin1Char('/') + error.message() : "none"_s;
}
