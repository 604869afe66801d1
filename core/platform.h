// What the library asks of the operating system: a slot per thread, zeroed memory, large pages, the fatal exit and the box.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zetpxl::platform {

// A per-thread slot; `destroy` runs at the end of each thread whose slot is filled. Gives -1 when none is left.
std::int32_t takeSlot(void (*destroy)(void*));
void giveBackSlot(std::int32_t slot);
void* slotValue(std::int32_t slot);
bool setSlotValue(std::int32_t slot, void* value);

// Asks for large pages under a block that is about to be written from end to end. Advice only: nothing depends on it.
void adviseLargePages(void* block, std::size_t size);

void* allocZeroed(std::size_t size);
void freeZeroed(void* block);

[[noreturn]] void fatalExit(const char* message);

// Buttons of a box, with the words of the platform that knows boxes.
inline constexpr std::uint32_t kBoxOkCancel = 0x1;
inline constexpr std::uint32_t kBoxYesNo = 0x4;
inline constexpr std::uint32_t kBoxButtons = 0xF;
inline constexpr std::uint32_t kBoxIconHand = 0x10;
inline constexpr std::uint32_t kBoxIconAsterisk = 0x40;
inline constexpr std::uint32_t kBoxTaskModal = 0x2000;

inline constexpr std::int32_t kAnswerOk = 1;
inline constexpr std::int32_t kAnswerCancel = 2;
inline constexpr std::int32_t kAnswerYes = 6;
inline constexpr std::int32_t kAnswerNo = 7;

// Shows text and title and gives the answer. Alone in its object file, so that tests replace it at link time.
std::int32_t showBox(const char* text, const char* title, std::uint32_t style);

}  // namespace zetpxl::platform
