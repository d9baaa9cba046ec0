// tessaro-host script dropouts.js [SECONDS...]: reports a dropout at each time and prints what a reporter counts.
var reporter = new tessaro.DropoutReporter();
var context = new host.DropoutContext("Sequence 1");
args.forEach(function (seconds) {
    context.report(tessaro.DropoutReason.IO_TIME_LIMIT_EXCEEDED, Number(seconds));
});
context.process();
Object.keys(tessaro.DropoutReason).forEach(function (name) {
    print(name, reporter.getDropoutCount(tessaro.DropoutReason[name]));
});
print("total", reporter.getTotalDropoutCount());
