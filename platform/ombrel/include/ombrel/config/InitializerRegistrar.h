#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <ombrel/Export.h>

namespace ombrel::config {

/// The kinds of program that a start-up step belongs to. Flags: a step may belong to several.
enum class EInitializerContextFlags : std::uint32_t
{
    kNone = 0,
    kApplication = 1, ///< the application with its windows
    kHeadless = 2,    ///< a program without windows: a command line tool, a render service
    kTest = 4,        ///< a test program
    kAll = 0xFFFFFFFF
};

[[nodiscard]] constexpr EInitializerContextFlags operator|(EInitializerContextFlags inA,
                                                           EInitializerContextFlags inB)
{
    return static_cast<EInitializerContextFlags>(static_cast<std::uint32_t>(inA) |
                                                 static_cast<std::uint32_t>(inB));
}

[[nodiscard]] constexpr EInitializerContextFlags operator&(EInitializerContextFlags inA,
                                                           EInitializerContextFlags inB)
{
    return static_cast<EInitializerContextFlags>(static_cast<std::uint32_t>(inA) &
                                                 static_cast<std::uint32_t>(inB));
}

/// An object whose construction enters a named step into the application's start-up sequence: a static of a
/// library, for the most part. The step runs later, when the host calls `RunStartUpSequence`. The destructor
/// takes the step out, so that a library can be unloaded; the sequence must not be running then.
///
///     const InitializerRegistrar sRegistrar("smpteltc", EInitializerContextFlags::kAll, [] { return true; },
///                                          "time");
class OMBREL_EXPORT InitializerRegistrar
{
public:
    /// `inInit` returns whether it succeeded; an exception counts as failure. The names of the steps that
    /// must have succeeded before it follow as text arguments. Several steps may bear one name; a dependency
    /// means all of them.
    template <typename... Names>
    InitializerRegistrar(const char* inName, EInitializerContextFlags inContexts,
                         std::function<bool()> inInit, const Names&... inDependencies)
    {
        Enter(inName, inContexts, std::move(inInit), {std::string(inDependencies)...});
    }
    ~InitializerRegistrar();
    InitializerRegistrar(const InitializerRegistrar&) = delete;
    InitializerRegistrar& operator=(const InitializerRegistrar&) = delete;

private:
    void Enter(const char* inName, EInitializerContextFlags inContexts, std::function<bool()> inInit,
               std::vector<std::string> inDependencies);
};

/// Why a step of the start-up sequence has not succeeded.
struct StartUpFailure
{
    std::string mName;
    std::string mReason;
};

/// What one run of the start-up sequence did.
struct StartUpReport
{
    /// Steps that ran now and succeeded, in the order in which they ran.
    std::vector<std::string> mCompleted;
    /// Steps that ran now and failed, then those that could not run, each with the reason.
    std::vector<StartUpFailure> mFailures;

    [[nodiscard]] bool HasSucceeded() const noexcept { return mFailures.empty(); }
};

/// Runs every step of any of the contexts that has not run yet, in the order of registration, but behind the
/// steps that it depends on. Each step runs once in its life, whether it succeeds or not. A step whose
/// dependency failed, is not there, has not run and belongs to other contexts, or depends on the step in a
/// circle, is reported and stays for a later run. Steps may register further steps, which run, too. Not to be
/// called by a step. [control]
OMBREL_EXPORT StartUpReport RunStartUpSequence(EInitializerContextFlags inContexts);

} // namespace ombrel::config
