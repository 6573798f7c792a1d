#pragma once

#include <mutex>
#include <string_view>

#include <kernel/Countable.h>
#include <kernel/String.h>

namespace Kernel {

/// Receives how far a long operation has come, and tells it whether to go on. Safe from many
/// threads.
class KERNEL_EXPORT Progress : public Countable
{
public:
    ~Progress() override;

    /// Sets the done share, which is clamped to 0…1; NaN is ignored.
    void SetProgress(double fraction);
    /// Adds to the done share.
    void AddProgress(double step);
    /// The done share, 0…1.
    double GetProgress() const;

    /// Says what is being done, as a short text for the user.
    void SetMessage(std::string_view message);

    /// Whether the user asked to stop. The operation should then end soon and in order.
    virtual bool IsCancelled() const = 0;

protected:
    Progress() = default;

    /// Shows the state; called after each change, by one thread at a time. It must not call the
    /// functions above.
    virtual void Report(double fraction, const String& message) = 0;

private:
    void Change(double fraction);

    mutable std::mutex m_mutex;
    double m_fraction = 0.0;
    String m_message;
};

} // namespace Kernel
