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

TEST_F(ScriptTest, TextKeepsItsCharactersBothWays)
{
    const auto script = WriteScript("print('\xF0\x9F\x98\x80', args[0], args[0].length, '\\ud83d');\n"
                                    "try { new host.AudioFile('\xF0\x9F\x98\x80.wav'); }\n"
                                    "catch (error) { print(error.message.indexOf('\\ud83d\\ude00.wav')); }\n"
                                    "throw new Error('\xF0\x9F\x98\x80');");
    const auto result = RunHost({"script", script, "\xF0\x9F\x98\x80\xFF"});
    EXPECT_EQ(result.mOutput, "\xF0\x9F\x98\x80 \xF0\x9F\x98\x80\xEF\xBF\xBD 3 \xEF\xBF\xBD\n0\n");
    EXPECT_NE(result.mError.find("script.js:4: Error: \xF0\x9F\x98\x80"), std::string::npos) << result.mError;
}

TEST_F(ScriptTest, ObjectsOutliveWhatAScriptDerivesFromThem)
{
    WriteSines("sines.wav", 1, 48);
    const auto script = WriteScript("var data = new host.AudioFile(args[0]).getSamples(0, 4);\n"
                                    "for (var i = 0; i < 9; ++i) { Object.create(data).getType(); }\n"
                                    "Duktape.gc(); Duktape.gc();\n"
                                    "print(data.getType(), data.constructor === tessaro.WaveformData);\n");
    const auto result = RunHost({"script", script, Name("sines.wav")});
    EXPECT_EQ(result.mOutput, "samples true\n") << result.mError;
}

TEST_F(ScriptTest, ValuesThatCannotBePassedAreRefused)
{
    const auto script = WriteScript("var deep = {}; deep.deep = deep;\n"
                                    "var wide = []; wide[4294967290] = 1;\n"
                                    "[Symbol('a'), print, {a: [1]}, deep, wide].forEach(function (value) {\n"
                                    "    try { new host.AudioFile(value); }\n"
                                    "    catch (error) { print(error.name, error.message); }\n"
                                    "});\n");
    EXPECT_EQ(RunHost({"script", script}).mOutput,
              "TypeError a symbol can't be passed on\n"
              "TypeError a function can't be passed on\n"
              "TypeError host.AudioFile.constructor: parameter \"path\": expected string, got object\n"
              "RangeError values are nested too deep\n"
              "RangeError an array has too many elements\n");
}

TEST_F(ScriptTest, CountsDropouts)
{
    const auto script = WriteScript(
        "var reporter = new tessaro.DropoutReporter(), reason = tessaro.DropoutReason;\n"
        "var context = new host.DropoutContext('Reel');\n"
        "context.report(reason.IO_BUFFER_UNDERRUN, 1.5);\n"
        "context.report(reason.CLOCK_JITTER, 0);\n"
        "print(reporter.getTotalDropoutCount());\n"
        "context.process();\n"
        "print(reporter.getTotalDropoutCount(), reporter.getDropoutCount(reason.IO_BUFFER_UNDERRUN));\n"
        "reporter.reset();\n"
        "print(reporter.getTotalDropoutCount());\n"
        "try { context.report(6, 0); } catch (error) { print(error.message); }\n"
        "print(Object.keys(reason).length);\n"
        "reporter.getDropoutCount(6);\n");
    const auto result = RunHost({"script", script});
    EXPECT_EQ(result.mOutput, "0\n2 1\n0\nthere is no such reason, see tessaro.DropoutReason\n6\n");
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_NE(result.mError.find(
                  "script.js:12: TypeError: The provided dropout reason is unknown. Use the constants "
                  "provided by DropoutReason as argument."),
              std::string::npos)
        << result.mError;
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
