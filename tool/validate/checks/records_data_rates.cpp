#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsDataRates(Trial& trial) {
    Stage stage(trial);
    bool any = false;
    forClips(trial, stage, [&](Playing& playing) {
        const DataRates rates = playing.clip().dataRates();
        if (rates.sizingResult != host::imNoErr || playing.info().hasDataRate == 0) {
            return;
        }
        any = true;
        if (rates.bufferSize < 0 ||
            rates.bufferSize % static_cast<std::int32_t>(sizeof(host::imDataSample)) != 0) {
            trial.fail({.call = "imDataRateAnalysis without a buffer",
                        .field = "imDataRateAnalysisRec.buffersize",
                        .clip = playing.path(),
                        .seen = std::to_string(rates.bufferSize)});
        } else if (rates.result != host::imNoErr) {
            trial.fail({.call = "imDataRateAnalysis with the buffer that it asked for",
                        .clip = playing.path(),
                        .seen = "result " + std::to_string(rates.result)});
        }
        for (std::size_t i = 0; i < rates.samples.size(); ++i) {
            if (rates.samples[i].sampledur == 0) {
                trial.fail({.call = "imDataRateAnalysis",
                            .field = "imDataSample.sampledur, row " + std::to_string(i),
                            .clip = playing.path(),
                            .seen = "0"});
                break;
            }
        }
    });
    if (!any) {
        Trial::skip("the plug-in tells no data rates");
    }
}

const Registered kRecordsDataRates(
    {"records.data-rates", 3, "imDataRateAnalysis asks for whole rows, and fills as many as it asked for.",
     "The host draws its graph of data rates of them.", recordsDataRates});

}  // namespace
}  // namespace simhost::tool::validate
