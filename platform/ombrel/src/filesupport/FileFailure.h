#pragma once

#include <string>
#include <system_error>

#include <ombrel/config/OmbrelException.h>

namespace ombrel::filesupport {

/// The exception "Can't <action> "<name>": <reason>".
inline config::ombrel_exception FileFailure(const char* inAction, const std::string& inName,
                                            const std::error_code& inReason)
{
    return config::ombrel_exception("Can't " + std::string(inAction) + " \"" + inName +
                                        "\": " + inReason.message(),
                                    config::kResultFileFailure);
}

} // namespace ombrel::filesupport
