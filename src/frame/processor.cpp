#include "frame/processor.h"

#if defined(__i386__) || defined(__x86_64__)
#include <cpuid.h>
#endif

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace norvala {

std::int32_t ProcessorLevel = 0;

namespace {

// Whether the processor is of the vendor that the table of codes was made for.
bool IsVerified(const ProcessorIdentity& identity) {
  return identity.identificationFlag && std::string_view(identity.vendor) == "GenuineIntel";
}

constexpr std::uint32_t Bit(std::uint32_t word, int bit) { return word >> bit & 1; }

// The level of a processor code, or -1 for a code outside the table.
std::int32_t LevelOfProcessorCode(std::int32_t code) {
  struct Entry {
    std::int32_t code, level;
  };
  constexpr Entry kEntries[] = {{-1, 0}, {0, 0}, {1, 0}, {2, 0},  {3, 0}, {4, 0},  {5, 1},  {16, 1}, {17, 1}, {64, 1},
                                {6, 2},  {7, 2}, {9, 2}, {65, 2}, {8, 3}, {10, 3}, {32, 3}, {66, 3}, {33, 4}, {34, 4}};
  const auto* const entry = std::ranges::find(kEntries, code, &Entry::code);
  return entry == std::end(kEntries) ? -1 : entry->level;
}

}  // namespace

ProcessorLeafReader* IdentificationInstruction() {
#if defined(__i386__) || defined(__x86_64__)
  // The compiler's query gives a highest leaf of 0 both for a processor that says so and for one that cannot toggle the
  // identification flag; only the former also writes the first word of the vendor's name.
  std::uint32_t vendorWord = 0;
  if (__get_cpuid_max(0, &vendorWord) == 0 && vendorWord == 0) return nullptr;
  return [](std::uint32_t leaf, std::uint32_t subleaf) {
    ProcessorLeaf result{};
    __cpuid_count(leaf, subleaf, result.eax, result.ebx, result.ecx, result.edx);
    return result;
  };
#else
  return nullptr;
#endif
}

ProcessorIdentity IdentifyProcessor(ProcessorLeafReader* read) {
  if (read == nullptr) return {};
  const ProcessorLeaf leaf0 = read(0, 0), leaf1 = read(1, 0), leaf2 = read(2, 0);
  constexpr std::uint32_t kExtended = 0x80000000U;
  const std::uint32_t family = leaf1.eax >> 8 & 0xF;
  ProcessorIdentity identity{
      .identificationFlag = true,
      .vendor = {},
      .features = {
          .family = family,
          .stepping = leaf1.eax & 0xF,
          .model = leaf1.eax >> 4 & 0xF,
          .processorType = family >> 11 & 3,
          .featureWord = leaf1.edx,
          .cacheWord1 = leaf2.eax,
          .cacheWord4 = leaf2.edx,
          .mmx = Bit(leaf1.edx, 23),
          .sse = Bit(leaf1.edx, 25),
          .sse2 = Bit(leaf1.edx, 26),
          .severalLogicalProcessors = Bit(leaf1.edx, 28) != 0 && (leaf1.ebx >> 16 & 0xFF) > 1,
          .sse3 = Bit(leaf1.ecx, 0),
          .extension64 = read(kExtended, 0).eax > kExtended ? Bit(read(kExtended + 1, 0).edx, 29) : 0,
          .ssse3 = Bit(leaf1.ecx, 9),
          .coresPerPackage = leaf0.eax >= 4 ? (read(4, 0).eax >> 26) + 1 : 1,
      }};
  const std::uint32_t vendor[] = {leaf0.ebx, leaf0.edx, leaf0.ecx};
  std::memcpy(identity.vendor, vendor, sizeof vendor);
  return identity;
}

std::int32_t DetectProcessorCode(const ProcessorIdentity& identity) {
  const ProcessorFeatures& f = identity.features;
  if (!identity.identificationFlag) return 0;
  if (IsVerified(identity)) {
    switch (f.family) {
      case 5:
        return f.mmx ? 2 : 1;
      case 6:
        if (!f.sse2) return f.sse ? 5 : f.mmx ? 4 : 3;
        return f.ssse3 ? 33 : f.sse3 ? 10 : 9;
      case 7:
        return 16;
      case 15:
        if (!f.sse2) return 17;
        if (!f.sse3) return f.severalLogicalProcessors ? 7 : 6;
        if (!f.extension64) return 8;
        return f.ssse3 ? 33 : 32;
      case 31:
        return 17;
      default:
        break;
    }
  }
  return f.ssse3 ? 33 : f.sse3 ? 66 : f.sse2 ? 65 : f.sse ? 64 : 0;
}

StatusCode SelectProcessorLevel(std::int32_t code) {
  const std::int32_t level = LevelOfProcessorCode(code);
  if (level < 0) return StatusCode::UnknownProcessorCode;
  ProcessorLevel = level;
  return StatusCode::Success;
}

// A code without a level gets the portable one, which every processor runs.
StatusCode SelectProcessorLevelAuto(const ProcessorIdentity& identity) {
  ProcessorLevel = std::max(LevelOfProcessorCode(DetectProcessorCode(identity)), std::int32_t{0});
  return IsVerified(identity) ? StatusCode::Success : StatusCode::ProcessorNotVerified;
}

}  // namespace norvala
