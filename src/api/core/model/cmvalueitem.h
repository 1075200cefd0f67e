// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmabstractworker.h"

#include <functional>

/// Follows the value of one node of any worker, whether or not the node exists yet.
class ORVA_API CMValueItem : public QObject, private CMChangeListener
{
    Q_OBJECT
public:
    /// Watches `path` through the root worker for as long as the item lives.
    CMValueItem(QObject* parent, const CMPath& path);
    ~CMValueItem() override;
    Q_DISABLE_COPY(CMValueItem)

    /// The path that is watched.
    [[nodiscard]] const CMPath& path() const { return m_path; }
    /// The last value; empty while none is known.
    [[nodiscard]] const OrvaValue& value() const { return m_value; }
    /// True if the node has had a value.
    [[nodiscard]] bool isKnown() const { return m_known; }

Q_SIGNALS:
    /// The value changed, or is known for the first time (`oldValue` is empty then). A value that
    /// was known when the item was made is announced from the event loop.
    void changed(const OrvaValue& oldValue, const OrvaValue& newValue);

private:
    void pathChanged(const CMPath& path, const OrvaValue& value) override;

    CMPath m_path;
    OrvaValue m_value;
    bool m_known = false;
};

/// Waits until the values of several nodes are known.
class ORVA_API CMInitWatcher : public QObject
{
    Q_OBJECT
public:
    /// `name` stands in the log while values are missing.
    CMInitWatcher(QObject* parent, const QString& name);

    /// Adds a path to wait for; `callback` gets its item when the value is first known. The item
    /// belongs to the watcher and goes on following the value.
    CMValueItem* newCMValueItem(const CMPath& path,
                                const std::function<void(CMValueItem*)>& callback = {});
    /// Ends the set-up: from now on `initDone` may come, always from the event loop.
    void done();

Q_SIGNALS:
    /// All values are known. Comes once.
    void initDone();

private:
    void itemKnown(CMValueItem* item, const std::function<void(CMValueItem*)>& callback);
    void checkComplete();

    QString m_name;
    QVector<CMValueItem*> m_missing;
    bool m_done = false;
    bool m_complete = false;
};
