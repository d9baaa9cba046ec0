#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <ombrel/messaging/Signal.h>
#include <tessaro/dropouts/DropoutReporter.h>

namespace host {

/// Processes reported dropouts on a thread of its own and prints on standard error what the reporter tells,
/// which is the first dropout; the rest is counted.
class DropoutPrinter
{
public:
    DropoutPrinter();
    ~DropoutPrinter();
    DropoutPrinter(const DropoutPrinter&) = delete;
    DropoutPrinter& operator=(const DropoutPrinter&) = delete;

    /// Processes what waits, and ends the thread.
    void Finish();

    struct Count
    {
        std::string mReason;
        int mCount = 0;
    };

    int GetTotal() const { return mReporter->GetTotalDropoutCount(); }
    /// The reasons that occurred.
    std::vector<Count> GetCounts() const;

private:
    std::shared_ptr<tessaro::dropouts::DropoutReporter> mReporter;
    ombrel::messaging::Connection mConnection;
    std::atomic<bool> mIsStopped{false};
    std::thread mThread;
};

} // namespace host
