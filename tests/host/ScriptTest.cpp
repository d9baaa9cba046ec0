#include <fstream>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class ScriptTest : public HostTest
{
protected:
    std::string WriteScript(const std::string& inSource)
    {
        std::ofstream(Path("script.js")) << inSource;
        return Name("script.js");
    }
};

TEST_F(ScriptTest, ReadsPeaksAndSamplesOfAFile)
{
    WriteSines("sines.wav", 2, 4800);
    const auto script =
        WriteScript("var file = new host.AudioFile(args[0]);\n"
                    "var peaks = file.getPeaks(0, file.frameCount, 10);\n"
                    "var samples = file.getSamples(100, 5);\n"
                    "print(peaks.getChannelCount(), peaks.getType(), samples.getType());\n"
                    "print(peaks.getChannel(1).length, peaks.getChannel(0)[0].min < 0,\n"
                    "      typeof samples.getChannel(0)[4].sample);\n"
                    "print(tessaro.WaveformData.TYPE_NONE, tessaro.WaveformData.TYPE_PEAKS,\n"
                    "      peaks instanceof tessaro.WaveformData);\n"
                    "try { peaks.getChannel(-1); } catch (error) { print(error.message); }\n");
    const auto result = RunHost({"script", script, Name("sines.wav")});
    EXPECT_EQ(result.mStatus, 0) << result.mError;
    EXPECT_EQ(result.mOutput, "2 peaks samples\n10 true number\nnone peaks true\n"
                              "tessaro.WaveformData.getChannel: parameter \"index\": expected integer from 0 "
                              "to 4294967295, got number -1\n");
}

TEST_F(ScriptTest, FailuresEndInOneLineWithTheScriptsPlace)
{
    WriteSines("sines.wav", 1, 480);
    const auto file = Name("sines.wav");
    ExpectFailure({"script", Name("none.js")}, 1, {"none.js", "No such file"});
    ExpectFailure({"script", Name("")}, 1, {"is a directory"});
    ExpectFailure({"script", WriteScript("var a = ;")}, 1, {"script.js:1", "SyntaxError"});
    ExpectFailure({"script", WriteScript("\nthrow new Error('on purpose');")}, 1,
                  {"script.js:2", "on purpose"});
    ExpectFailure({"script", WriteScript("throw 'text';")}, 1, {"script.js", "text"});
    ExpectFailure({"script", WriteScript("\nnew host.AudioFile('gone.wav');")}, 1,
                  {"gone.wav", "No such file"});
    ExpectFailure({"script",
                   WriteScript("var d = new host.AudioFile(args[0]).getSamples(0, 480);\n"
                               "for (var i = 3; ; --i) d.getChannel(i);"),
                   file},
                  1, {"getChannel", "got number -1"});
    ExpectFailure({"script", WriteScript("new tessaro.WaveformData();")}, 1, {"can't make"});
    ExpectFailure({"script", WriteScript("tessaro.WaveformData.prototype.getType();")}, 1, {"no object"});
    ExpectFailure({"script", WriteScript("function f() { f(); } f();")}, 1, {"RangeError"});
}

} // namespace
} // namespace tessaro::testing
