#pragma once

#include "platform/BiometricContext.h"

#include <QStringList>

#include <vector>

// A reader without a device: says what the test wants and keeps the questions for the test to
// answer.
class FakeBiometricContext final : public BiometricContext
{
public:
    Evaluability canEvaluatePolicy() override { return evaluability; }

    void evaluatePolicy(const QString &reason, std::function<void(bool)> reply) override
    {
        reasons += reason;
        replies.push_back(std::move(reply));
    }

    Evaluability evaluability{true, std::nullopt, std::nullopt};
    QStringList reasons;
    std::vector<std::function<void(bool)>> replies;
};
