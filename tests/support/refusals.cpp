#include "tests/support/refusals.h"

#include <gtest/gtest.h>

namespace zetpxl::test {

void expectRefusals(EventLog& log, const RefusedCall& call, const std::vector<Refusal>& refusals) {
    const Recorder recorder(log);
    for (const Refusal& refusal : refusals) {
        log.lines.clear();
        zetSetErrStatus(0);
        EXPECT_EQ(call.run(), refusal.result) << refusal.words;
        const std::string line = reportLine(zetGetErrStatus(), call.name, refusal.words, call.source);
        EXPECT_EQ(log.lines, std::vector{line});
        refusal.mend();
    }
    log.lines.clear();
    zetSetErrStatus(0);
    EXPECT_EQ(call.run(), 0);
    EXPECT_TRUE(log.lines.empty()) << log.text();
}

}  // namespace zetpxl::test
