#pragma once

#include "platform/ActivationPolicy.h"

#include <QStringList>

// Records what was asked of the desktop: "regular", "accessory", "activate".
class RecordingActivationPolicy final : public ActivationPolicy
{
public:
    void setActivationPolicy(Policy policy) override
    {
        m_requests +=
            policy == Policy::Regular ? QStringLiteral("regular") : QStringLiteral("accessory");
    }
    void activateIgnoringOtherApps() override { m_requests += QStringLiteral("activate"); }

    [[nodiscard]] const QStringList &requests() const { return m_requests; }

private:
    QStringList m_requests;
};
