#pragma once

#include <cstdint>
#include <string_view>

#include "frame/dispatch.h"

namespace norvala {

// What the processor identification instruction tells, every field 32 bits.
struct ProcessorFeatures {
  std::uint32_t family;
  std::uint32_t stepping;
  std::uint32_t model;
  std::uint32_t processorType;  // always 0: taken from the already masked family
  std::uint32_t featureWord;    // leaf 1, fourth result
  std::uint32_t cacheWord1;     // leaf 2, first result
  std::uint32_t cacheWord4;     // leaf 2, fourth result
  std::uint32_t mmx;
  std::uint32_t sse;
  std::uint32_t sse2;
  std::uint32_t severalLogicalProcessors;
  std::uint32_t sse3;
  std::uint32_t extension64;
  std::uint32_t ssse3;
  std::uint32_t coresPerPackage;
};

// The running processor as seen by the selection: nothing but the flag is valid when it cannot be toggled.
struct ProcessorIdentity {
  bool identificationFlag;  // bit 21 of the flags register can be toggled
  char vendor[13];          // leaf 0, zero-terminated
  ProcessorFeatures features;
};

// The results of one leaf of the identification instruction, and the instruction as a function of leaf and subleaf.
struct ProcessorLeaf {
  std::uint32_t eax, ebx, ecx, edx;
};
using ProcessorLeafReader = ProcessorLeaf(std::uint32_t leaf, std::uint32_t subleaf);

ProcessorFeatures ReadProcessorFeatures(ProcessorLeafReader read);
ProcessorIdentity IdentifyProcessor();

// Classification as a pure function of the identity.
std::int32_t ClassifyProcessor(bool identificationFlag, std::string_view vendor, const ProcessorFeatures& features);

// Level of a processor code, or -1 for a code outside the table.
std::int32_t LevelOfProcessorCode(std::int32_t code);

// Code of the running processor.
std::int32_t DetectProcessorCode();

// Sets ProcessorLevel from a code. An unknown code gives UnknownProcessorCode and leaves the level alone.
// Not to be called while other threads run primitives.
StatusCode SelectProcessorLevel(std::int32_t code);

// Sets ProcessorLevel for an identity: level 0 for a code outside the table, ProcessorNotVerified when there is no
// identification or the vendor is not the one that the table was made for. The level is set in every case.
StatusCode SelectProcessorLevelFor(const ProcessorIdentity& identity);

// The same for the running processor.
StatusCode SelectProcessorLevelAuto();

}  // namespace norvala
