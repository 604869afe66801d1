// Median and morphology.
#include "ratio.h"

namespace {

using bench::Form;

void addMedian(const Form& form, std::int32_t size, double atMost) {
    bench::add("zetMedianFilter", std::to_string(size) + " by " + std::to_string(size), form, atMost,
               bench::between([=](ZetImage* source, ZetImage* destination) {
                   zetMedianFilter(source, destination, size, size, size / 2, size / 2);
               }));
}

struct Morphology {
    const char* name;
    void (*run)(ZetImage*, ZetImage*, std::int32_t);
};

constexpr Morphology kDilate{"zetDilate", zetDilate}, kErode{"zetErode", zetErode}, kOpen{"zetOpen", zetOpen},
    kClose{"zetClose", zetClose};

void addMorphology(const Morphology& morphology, const Form& form, std::int32_t size, double atMost) {
    bench::add(morphology.name, std::to_string(size) + " by " + std::to_string(size), form, atMost,
               bench::between(
                   [=](ZetImage* source, ZetImage* destination) { morphology.run(source, destination, size / 2); }));
}

void addMedians() {
    const std::int32_t sizes[] = {3, 5, 7, 15, 31}, wordSizes[] = {3, 5, 9, 15};
    const double bytes[] = {2.2, 12, 60, 120, 150}, words[] = {2, 11, 300, 1000};
    for (int i = 0; i < 5; ++i) addMedian(bench::k8U, sizes[i], bytes[i]);
    for (int i = 0; i < 5; ++i) addMedian(bench::k8UColours, sizes[i], bytes[i]);
    for (int i = 0; i < 4; ++i) addMedian(bench::k16U, wordSizes[i], words[i]);
}

void addMorphologies() {
    const std::int32_t sizes[] = {3, 7, 15, 31};
    const double once[] = {1.6, 2.2, 3, 3.5}, twice[] = {3, 4, 5, 6}, bits[] = {8, 12, 16};
    for (const Form& form : {bench::k8U, bench::k16U, bench::k8UColours})
        for (int i = 0; i < 4; ++i) addMorphology(kDilate, form, sizes[i], once[i]);
    for (int i = 0; i < 4; ++i) addMorphology(kErode, bench::k8U, sizes[i], once[i]);
    for (int i = 0; i < 4; ++i) addMorphology(kOpen, bench::k8U, sizes[i], twice[i]);
    for (int i = 0; i < 4; ++i) addMorphology(kClose, bench::k8U, sizes[i], twice[i]);
    for (int i = 0; i < 3; ++i) addMorphology(kDilate, bench::k1U, sizes[i], bits[i]);
    addMorphology(kOpen, bench::k1U, 3, 16);
    addMorphology(kOpen, bench::k1U, 15, 30);
}

}  // namespace

int main(int argc, char** argv) {
    addMedians();
    addMorphologies();
    return bench::run(argc, argv);
}
