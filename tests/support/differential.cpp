#include "tests/support/differential.h"

#include <algorithm>
#include <cstdlib>

#include "tests/support/allocations.h"

namespace zetpxl::test {
namespace {

std::int64_t environmentNumber(const char* name, std::int64_t otherwise) {
    const char* text = std::getenv(name);
    return text ? std::strtoll(text, nullptr, 10) : otherwise;
}

struct Side {
    Scene scene;
    Call call;
    std::string result;
    std::int32_t status = 0;

    void build(const CaseMaker& make, const DifferentialRules& rules, std::uint64_t seed) {
        Random random(seed * 0x9E3779B1u + 17);
        status = random.percent(80) ? 0 : random.pick({-4, -5, -110, 3});
        if (random.percent(rules.failingFetches)) scene.failFetchAt = random.between(1, random.oneIn(3) ? 20 : 5);
        call = make(scene, random);
    }

    void runLibrary() {
        const Recorder recorder(scene.log, status);
        result = call.library();
        status = zetGetErrStatus();
    }

    void runModel() {
        // The model looks at tiles when it likes; its calls are only for the log.
        scene.closesTiles = false;
        scene.allow(GuardedBuffer::Access::kData);
        Model model{scene.log, status};
        result = call.model(model);
        status = model.status;
    }
};

// Long results are cut to the surroundings of their first difference.
std::string differenceOfResults(const std::string& library, const std::string& model) {
    if (library == model) return "";
    std::size_t at = 0;
    while (at < library.size() && at < model.size() && library[at] == model[at]) ++at;
    const std::size_t from = at > 120 ? at - 120 : 0;
    return "result: library ..." + library.substr(std::min(from, library.size()), 160) + "...\nmodel ..." +
           model.substr(std::min(from, model.size()), 160);
}

std::string differenceOfSides(Side& library, Side& model, const CompareRules& rules) {
    const std::string results = differenceOfResults(library.result, model.result);
    if (!results.empty()) return results;
    if (library.status != model.status)
        return "status: library " + std::to_string(library.status) + ", model " + std::to_string(model.status);
    if (library.scene.log.lines != model.scene.log.lines)
        return "events: library\n" + library.scene.log.text() + "model\n" + model.scene.log.text();
    return differenceOfScenes(library.scene, model.scene, rules);
}

bool oneCase(const CaseMaker& make, const DifferentialRules& rules, std::uint64_t seed) {
    Side library;
    Side model;
    library.build(make, rules, seed);
    const std::int32_t start = library.status;
    const std::string images = library.scene.describe();
    model.build(make, rules, seed);
    library.runLibrary();
    model.runModel();
    const std::string difference = differenceOfSides(library, model, rules.compare);
    EXPECT_EQ(difference, "") << "ZETPXL_SEED=" << seed << " start status " << start << " " << library.call.parameters
                              << "\n"
                              << images;
    return difference.empty();
}

// One call in which a step fails, against an untouched twin. Gives false when the call had no such step.
bool oneFailure(const CaseMaker& make, const FailureRules& rules, std::uint64_t seed, std::int32_t allocation,
                std::int32_t fetch) {
    const DifferentialRules quiet{.compare = {}, .failingFetches = 0};
    Side failing;
    Side untouched;
    failing.build(make, quiet, seed);
    untouched.build(make, quiet, seed);
    failing.status = 0;
    failing.scene.failFetchAt = fetch;
    std::int32_t live = 0;
    bool failed = false;
    {
        const AllocationWatch watch(allocation);
        failing.runLibrary();
        live = watch.live();
        failed = watch.failed() || (fetch > 0 && failing.scene.fetches >= fetch);
    }
    const std::string where = "ZETPXL_SEED=" + std::to_string(seed) + " allocation " + std::to_string(allocation) +
                              " fetch " + std::to_string(fetch) + "\n" + untouched.scene.describe() +
                              failing.scene.log.text();
    EXPECT_EQ(live, 0) << "blocks left behind; " << where;
    EXPECT_EQ(differenceOfScenes(failing.scene, untouched.scene, {.nanEqual = false, .fieldsOnly = true}), "") << where;
    if (fetch == 0) {
        EXPECT_LE(failing.scene.heldTiles(), allocation > 0 ? rules.heldTiles : 0) << where;
    }
    return failed;
}

}  // namespace

void compareWithModel(const CaseMaker& make, const DifferentialRules& rules) {
    const std::int64_t one = environmentNumber("ZETPXL_SEED", -1);
    if (one >= 0) {
        oneCase(make, rules, static_cast<std::uint64_t>(one));
        return;
    }
    const std::int64_t cases = environmentNumber("ZETPXL_CASES", 2000) * rules.share / 100;
    std::int32_t failures = 0;
    for (std::int64_t seed = 0; seed < cases && failures < 3; ++seed)
        if (!oneCase(make, rules, static_cast<std::uint64_t>(seed))) ++failures;
}

void failEveryStep(const CaseMaker& make, const FailureRules& rules) {
    for (std::int32_t i = 0; i < rules.cases && !testing::Test::HasFailure(); ++i) {
        const auto seed = static_cast<std::uint64_t>(i);
        for (std::int32_t n = 1; oneFailure(make, rules, seed, n, 0) && n < 200; ++n) {
        }
        for (std::int32_t n = 1; oneFailure(make, rules, seed, 0, n) && n < 200; ++n) {
        }
    }
}

}  // namespace zetpxl::test
