#pragma once

#include <memory>
#include <string>
#include <vector>

#include <duktape.h>

namespace host {

/// Runs JavaScript over all script classes that are registered when the engine is made: each becomes a class
/// of its namespace, by a walk over its definition. Beside them scripts have `print` and the array `args`.
class ScriptEngine
{
public:
    explicit ScriptEngine(const std::vector<std::string>& inArguments);

    /// Throws `FileError` that names the script, the line and the error, where the script doesn't catch it.
    void Run(const std::string& inName, const std::string& inSource);

private:
    struct Closer
    {
        void operator()(duk_context* inHeap) const { duk_destroy_heap(inHeap); }
    };

    std::unique_ptr<duk_context, Closer> mHeap;
};

} // namespace host
