// Sum, OR, AND and exclusive OR with a constant, against the model.
#include <gtest/gtest.h>

#include "pixel/logic.h"
#include "pixel/masks.h"
#include "tests/pixel/draw_calls.h"
#include "tests/support/allocations.h"
#include "tests/support/model_point.h"

namespace zetpxl::test {
namespace {

using Operation = void (*)(ZetImage*, ZetImage*, ZetImage*);
using ModelOperation = void (*)(Model&, ZetImage*, ZetImage*, ZetImage*);

CaseMaker casesOf(Operation operation, ModelOperation modelOperation) {
    return [=](Scene& scene, Random& random) {
        const Operands o = drawOperands(scene, random);
        return Call{
            namesOf(o), [=] { return operation(&o.a->record, &o.b->record, &o.dst->record), ""; },
            [=](Model& model) { return modelOperation(model, &o.a->record, &o.b->record, &o.dst->record), ""; }};
    };
}

Call drawXorS(Scene& scene, Random& random) {
    const Operands o = drawOperands(scene, random);
    const std::int32_t value = random.pick({0, 1, 2, 0x1FF, -1, random.word()});
    return {namesOf(o) + " value " + std::to_string(value),
            [=] { return zetXorS(&o.a->record, &o.dst->record, value), ""; },
            [=](Model& model) { return modelXorS(model, &o.a->record, &o.dst->record, value), ""; }};
}

constexpr DifferentialRules kAnyNaN{.compare = {.nanEqual = true}};

TEST(Point, AddAgreesWithTheModel) { compareWithModel(casesOf(&zetAdd, &modelAdd), kAnyNaN); }
TEST(Point, OrAgreesWithTheModel) { compareWithModel(casesOf(&zetOr, &modelOr)); }
TEST(Point, AndAgreesWithTheModel) { compareWithModel(casesOf(&zetAnd, &modelAnd)); }
TEST(Point, XorSAgreesWithTheModel) { compareWithModel(&drawXorS); }

TEST(Point, FailCleanlyAtEveryStep) {
    failEveryStep(casesOf(&zetAdd, &modelAdd));
    failEveryStep(casesOf(&zetAnd, &modelAnd));
    failEveryStep(&drawXorS);
}

// ---- refusals, two faults at once

struct Trio {
    Scene scene;
    TestImage *a, *b, *dst;

    explicit Trio(std::uint32_t depth) {
        Random random(7);
        const ImageShape shape{.depth = depth, .width = 9, .height = 5};
        a = &scene.add("a", shape, random);
        b = &scene.add("b", shape, random);
        dst = &scene.add("dst", shape, random);
    }
};

struct Fault {
    std::int32_t status;
    const char* context;
    void (*apply)(Trio&);
};

constexpr Fault kFaults[] = {
    {ZET_StatusBadAlign, "Incorrect Image", [](Trio& t) { t.a->record.align = 1; }},
    {ZET_StatusBadOrigin, "Incorrect Image", [](Trio& t) { t.b->record.origin = 7; }},
    {ZET_StatusBadAlpha, "Incorrect Image", [](Trio& t) { t.dst->record.alphaChannel = -1; }},
    {-5, "(srcImageA->depth != dstImage->depth)", [](Trio& t) { t.a->record.depth = ZET_DEPTH_8S; }},
    {-5, "(srcImageB->depth != dstImage->depth)", [](Trio& t) { t.b->record.depth = ZET_DEPTH_8S; }},
    {-5, "(srcImageA->dataOrder != dstImage->dataOrder)", [](Trio& t) { t.a->record.dataOrder = 1; }},
    {-5, "(srcImageB->dataOrder != dstImage->dataOrder)", [](Trio& t) { t.b->record.dataOrder = 1; }},
    {-5, "(nChSrcA != nChDst)", [](Trio& t) { t.a->record.nChannels = 2; }},
    {-5, "(nChSrcB != nChDst)", [](Trio& t) { t.b->record.nChannels = 2; }},
};

TEST(Point, RefuseTheFirstFaultInOrder) {
    struct Named {
        Operation run;
        const char *name, *source;
    };
    for (const Named& op :
         {Named{&zetAdd, "zetAdd", "zetadd"}, {&zetOr, "zetOr", "zetor"}, {&zetAnd, "zetAnd", "zetand"}})
        for (std::size_t i = 0; i < std::size(kFaults); ++i)
            for (std::size_t j = i; j < std::size(kFaults); ++j) {
                Trio trio(ZET_DEPTH_8U);
                kFaults[j].apply(trio);
                kFaults[i].apply(trio);
                const Recorder recorder(trio.scene.log);
                op.run(&trio.a->record, &trio.b->record, &trio.dst->record);
                EXPECT_EQ(trio.scene.log.lines,
                          std::vector{reportLine(kFaults[i].status, op.name, kFaults[i].context, op.source)});
            }
}

TEST(Point, NullImages) {
    Trio bytes(ZET_DEPTH_8U);
    Trio bits(ZET_DEPTH_1U);
    EventLog log;
    const Recorder recorder(log);
    zetAdd(nullptr, nullptr, nullptr);
    zetAdd(&bytes.a->record, nullptr, nullptr);
    zetAdd(&bits.a->record, nullptr, nullptr);
    zetAdd(&bits.a->record, &bits.b->record, nullptr);
    zetXorS(nullptr, nullptr, 0);
    EXPECT_EQ(log.lines, (std::vector{reportLine(-5, "zetAdd", "srcImageA==0", "zetadd"),
                                      reportLine(-9, "zetAdd", "Incorrect Image", "zetadd"),
                                      reportLine(-9, "zetOr", "Incorrect Image", "zetor"),
                                      reportLine(-9, "zetOr", "Incorrect Image", "zetor"),
                                      reportLine(-9, "zetXorS", "Incorrect Image", "zetxors")}));
}

TEST(Point, FloatsAreRefusedLateAndOnlyBitwise) {
    Trio trio(ZET_DEPTH_32F);
    Random random(1);
    trio.a->setMask(&addMask(trio.scene, "m1", 9, 5, random));
    trio.dst->setMask(&addMask(trio.scene, "m2", 9, 5, random));
    trio.a->mask->record.roi = trio.dst->mask->record.roi = nullptr;
    const char* words = "This function does not support depth 32F";
    const Recorder recorder(trio.scene.log);
    {
        const AllocationWatch watch;
        zetOr(&trio.a->record, &trio.b->record, &trio.dst->record);
        EXPECT_EQ(watch.live(), 0);
    }
    const AllocationWatch watch(1);
    zetAnd(&trio.a->record, &trio.b->record, &trio.dst->record);
    zetXorS(&trio.a->record, &trio.b->record, 1);
    EXPECT_EQ(trio.scene.log.lines,
              (std::vector{reportLine(-5, "zetOr", words, "zetor"), reportLine(-4, "zetAnd", "Out of memory", "zetand"),
                           reportLine(-5, "zetXorS", words, "zetxors")}));
}

TEST(Point, OutOfMemoryForTheJoinedMaskHasOneReport) {
    for (const std::int32_t n : {1, 2}) {
        Trio trio(ZET_DEPTH_16S);
        Random random(1);
        TestImage& mask = addMask(trio.scene, "m", 9, 5, random);
        mask.record.roi = nullptr;
        trio.a->setMask(&mask);
        trio.b->setMask(&mask);
        const Recorder recorder(trio.scene.log);
        const AllocationWatch watch(n);
        zetAdd(&trio.a->record, &trio.b->record, &trio.dst->record);
        EXPECT_EQ(watch.live(), 0);
        ASSERT_FALSE(trio.scene.log.lines.empty());
        EXPECT_EQ(trio.scene.log.lines.back(), reportLine(-4, "zetAdd", "Out of memory", "zetadd"));
    }
}

// ---- joined masks

std::string planeText(const ZetImage& image) {
    std::string text = std::to_string(image.width) + "x" + std::to_string(image.height) + " ";
    for (std::int32_t y = 0; y < image.height; ++y)
        for (std::int32_t x = 0; x < image.width; ++x) text += getSample(image, 0, y, x) ? '1' : '0';
    return text;
}

std::string joinedText(const JoinedMask& mask) {
    std::string text = std::to_string(mask.width) + "x" + std::to_string(mask.height) + " ";
    for (const bool bit : mask.bits) text += bit ? '1' : '0';
    return text;
}

TEST(Masks, JoinedMasksAgreeWithTheModel) {
    compareWithModel([](Scene& scene, Random& random) {
        std::vector<ZetImage*> masks;
        for (const char* name : {"m1", "m2", "m3"}) {
            TestImage& mask = addMask(scene, name, 30, 10, random);
            masks.push_back(random.oneIn(3) ? nullptr : &mask.record);
        }
        if (random.oneIn(6)) masks[1] = masks[0];
        return Call{"",
                    [masks] {
                        std::int32_t kind = -1;
                        ZetImage* mask = ownCombineMasks(masks[0], masks[1], masks[2], &kind);
                        if (kind == kMaskEmpty) return std::string("empty");
                        if (kind != kMaskTemporary) return std::string(mask ? "given" : "none");
                        EXPECT_EQ(mask->depth, ZET_DEPTH_1U);
                        EXPECT_EQ(mask->dataOrder, 1);
                        EXPECT_EQ(mask->align, 8);
                        EXPECT_EQ(mask->roi, nullptr);
                        const ZetImage* first = masks[0] ? masks[0] : masks[1];
                        EXPECT_EQ(mask->origin, first->origin);
                        const std::string text = planeText(*mask);
                        zetDeallocate(mask, 3);
                        return text;
                    },
                    [masks](Model&) {
                        const JoinedMask joined = modelJoinMasks({masks[0], masks[1], masks[2]});
                        if (joined.kind == 3) return std::string("empty");
                        return joined.kind == 1 ? joinedText(joined) : std::string(joined.given ? "given" : "none");
                    }};
    });
}

TEST(Masks, OneMaskIsGivenBack) {
    Random random(1);
    Scene scene;
    ZetImage* mask = &addMask(scene, "m", 9, 9, random).record;
    for (const auto& [a, b, c] : {std::tuple<ZetImage*, ZetImage*, ZetImage*>{mask, nullptr, nullptr},
                                  {nullptr, mask, nullptr},
                                  {nullptr, nullptr, mask}}) {
        std::int32_t kind = -1;
        EXPECT_EQ(ownCombineMasks(a, b, c, &kind), mask);
        EXPECT_EQ(kind, kMaskAsGiven);
    }
}

}  // namespace
}  // namespace zetpxl::test
