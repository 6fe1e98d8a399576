#include "platform/BiometricContext.h"

namespace {

class NoBiometrics final : public BiometricContext
{
public:
    Evaluability canEvaluatePolicy() override { return {}; }
    void evaluatePolicy(const QString &, std::function<void(bool)> reply) override { reply(false); }
};

} // namespace

std::unique_ptr<BiometricContext> makeBiometricContext()
{
    return std::make_unique<NoBiometrics>();
}
