#include <ombrel/config/InitializerRegistrar.h>

#include <algorithm>
#include <exception>
#include <list>
#include <mutex>
#include <utility>

#include <ombrel/config/OmbrelException.h>
#include <ombrel/logging/LogException.h>

namespace ombrel::config {

namespace {

enum class StepState
{
    kWaiting,
    kSucceeded,
    kFailed
};

struct Step
{
    const InitializerRegistrar* mRegistrar;
    std::string mName;
    EInitializerContextFlags mContexts;
    std::function<bool()> mInit;
    std::vector<std::string> mDependencies;
    StepState mState = StepState::kWaiting;

    bool IsDue(EInitializerContextFlags inContexts) const
    {
        return mState == StepState::kWaiting && (mContexts & inContexts) != EInitializerContextFlags::kNone;
    }
};

struct Sequence
{
    /// Held for a whole run.
    std::mutex mRunMutex;
    /// Guards the list, not the running steps.
    std::mutex mMutex;
    std::list<Step> mSteps;
};

/// Made by the first registrar of any library, and never destroyed, since registrars of other libraries go
/// last.
Sequence& GetSequence()
{
    static auto& instance = *new Sequence;
    return instance;
}

/// Why the step cannot run for want of this dependency; empty when nothing is in the way.
std::string FindObstacle(const std::list<Step>& inSteps, const std::string& inDependency,
                         EInitializerContextFlags inContexts)
{
    const auto quoted = "needs \"" + inDependency + "\", which ";
    bool isThere = false;
    for (const auto& step : inSteps) {
        if (step.mName != inDependency) {
            continue;
        }
        isThere = true;
        if (step.mState == StepState::kFailed) {
            return quoted + "failed";
        }
        if (step.mState == StepState::kWaiting) {
            return quoted + (step.IsDue(inContexts) ? "could not run" : "belongs to other contexts");
        }
    }
    return isThere ? std::string() : quoted + "is not registered";
}

std::string FindObstacle(const std::list<Step>& inSteps, const Step& inStep,
                         EInitializerContextFlags inContexts)
{
    for (const auto& dependency : inStep.mDependencies) {
        if (auto obstacle = FindObstacle(inSteps, dependency, inContexts); !obstacle.empty()) {
            return obstacle;
        }
    }
    return {};
}

/// Runs a step; returns the reason of its failure, empty for success.
std::string Run(const Step& inStep)
{
    try {
        return inStep.mInit && inStep.mInit() ? std::string() : "reported failure";
    } catch (...) {
        logging::LogException(std::current_exception(), "start-up step " + inStep.mName);
        return "threw: " + ExtractMessageFromException(std::current_exception());
    }
}

} // namespace

void InitializerRegistrar::Enter(const char* inName, EInitializerContextFlags inContexts,
                                 std::function<bool()> inInit, std::vector<std::string> inDependencies)
{
    auto& sequence = GetSequence();
    const std::lock_guard lock(sequence.mMutex);
    sequence.mSteps.push_back(Step{this, inName, inContexts, std::move(inInit), std::move(inDependencies)});
}

InitializerRegistrar::~InitializerRegistrar()
{
    auto& sequence = GetSequence();
    const std::lock_guard lock(sequence.mMutex);
    sequence.mSteps.remove_if([this](const Step& inStep) { return inStep.mRegistrar == this; });
}

StartUpReport RunStartUpSequence(EInitializerContextFlags inContexts)
{
    auto& sequence = GetSequence();
    const std::lock_guard run(sequence.mRunMutex);
    std::unique_lock lock(sequence.mMutex);
    auto& steps = sequence.mSteps;
    StartUpReport report;
    const auto findNext = [&] {
        return std::find_if(steps.begin(), steps.end(), [&](const Step& inStep) {
            return inStep.IsDue(inContexts) && FindObstacle(steps, inStep, inContexts).empty();
        });
    };
    for (auto next = findNext(); next != steps.end(); next = findNext()) {
        lock.unlock();
        auto failure = Run(*next);
        lock.lock();
        next->mState = failure.empty() ? StepState::kSucceeded : StepState::kFailed;
        if (failure.empty()) {
            report.mCompleted.push_back(next->mName);
        } else {
            report.mFailures.push_back({next->mName, std::move(failure)});
        }
    }
    for (const auto& step : steps) {
        if (step.IsDue(inContexts)) {
            report.mFailures.push_back({step.mName, FindObstacle(steps, step, inContexts)});
        }
    }
    return report;
}

} // namespace ombrel::config
