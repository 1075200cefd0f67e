#pragma once

#include <core/orva.h>

/// A value from its JSON text.
inline OrvaValue json(const QString& text)
{
    return OrvaValue(OrvaPlain::fromJson(text.toUtf8())->toHash());
}

/// A node tree that is one worker: the root, in which a test creates the nodes of everybody else.
class TestTree : public CMNodesWorker
{
public:
    TestTree()
        : CMNodesWorker({}, QStringLiteral("test"))
    {
        CMSetRoot(this);
    }
    ~TestTree() override { CMSetRoot(nullptr); }

    /// Creates a value node without a value.
    CMValueNode* addValue(const CMPath& path) { return CMValueNode::create(nodes(), path); }

    /// Creates an activate node that answers with `error`, where that is not empty.
    void addActivation(const CMPath& path, const CMError& error = {})
    {
        const auto count = [this, path, error](const CMSetDataRequest& request) {
            ++m_activations[path];
            error.isEmpty() ? request.answer() : request.fail(error);
        };
        connect(CMActivateNode::create(nodes(), path), &CMActivateNode::invoked, this, count);
    }

    /// How often a node of `addActivation()` was activated.
    [[nodiscard]] int activations(const CMPath& path) const { return m_activations.value(path); }

    CMReply<QVariant> activate(const CMPath& path, const OrvaValue& value = {})
    {
        const auto reply = CMReply<QVariant>::create();
        invoke(path, value, reply);
        return reply;
    }

private:
    QHash<CMPath, int> m_activations;
};
