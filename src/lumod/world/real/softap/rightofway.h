// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/radio/realradio.h"

/// The radio's right of way before the soft access point. Many a radio has one channel at a time:
/// while it shall join first the access point waits, until it has joined or its time is over.
class RightOfWay : public QObject
{
    Q_OBJECT

public:
    /// `radio` outlives it.
    explicit RightOfWay(RealRadio& radio);

    /// The radio shall join first.
    void give() { m_given = true; }
    /// So it shall, since it was refused: it begins anew once its way is clear.
    void claim();
    /// Nothing is in the radio's way any more.
    void clear();
    /// It shall not join first.
    void take();
    /// True while the radio shall join first and may still do so.
    [[nodiscard]] bool holds();
    /// The radio has had it in vain, not long ago.
    [[nodiscard]] bool isSpent() const { return m_calm.isActive(); }
    /// The radio has other networks to join, none of them in vain yet.
    void renew() { m_calm.stop(); }

Q_SIGNALS:
    /// The radio has had it in vain.
    void spent();

private:
    RealRadio& m_radio;
    bool m_given = false;
    bool m_claimed = false;
    QTimer m_patience; ///< with a radio that shall join first
    QTimer m_calm;     ///< after it has had it in vain
};
