#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <velmora/ScriptCastInterface.h>
#include <velmora/ScriptObject.h>

namespace velmora::test {

/// What the program has.
struct Take
{
    std::vector<float> mSamples;
};

/// And what stands for it in scripts. Scripts can't make one.
class TakeObject : public ScriptObject, public ScriptCastInterface<std::shared_ptr<Take>>
{
public:
    static void DefineObject(definition::ScriptObjectDefinition<TakeObject>& ioDefinition);

    void Initialize(const std::shared_ptr<Take>& inTake) { mTake = inTake; }
    bool CastTo(std::shared_ptr<Take>& outTake) const override
    {
        outTake = mTake;
        return mTake != nullptr;
    }

private:
    unsigned GetLength() const { return static_cast<unsigned>(mTake->mSamples.size()); }
    std::vector<boost::intrusive_ptr<AnonObject>> GetPeaks(unsigned inSlots) const;

    std::shared_ptr<Take> mTake;
};

class Fader : public ScriptObject
{
public:
    static void DefineObject(definition::ScriptObjectDefinition<Fader>& ioDefinition);

    explicit Fader(std::string inName = "unnamed") : mName(std::move(inName)) { ++gAlive; }
    ~Fader() override { --gAlive; }

    static inline int gAlive = 0;

private:
    double GetGain() const { return mGain; }
    void SetGain(double inGain);
    const std::string& GetName() const { return mName; }
    void Fade(double inGain, const std::vector<int>& inFrames);
    std::shared_ptr<Take> Apply(const std::shared_ptr<Take>& inTake) const;
    void Link(const boost::intrusive_ptr<Fader>& inOther) { mLinked = inOther; }
    boost::intrusive_ptr<Fader> GetLinked() const { return mLinked; }

    std::string mName;
    double mGain = 1.0;
    boost::intrusive_ptr<Fader> mLinked;
};

} // namespace velmora::test

template <>
struct velmora::utility::ScriptingObjectOf<std::shared_ptr<velmora::test::Take>>
{
    using type = velmora::test::TakeObject;
};
