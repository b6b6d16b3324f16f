#pragma once

#include <cstdint>

#include "frame/dispatch.h"

namespace norvala {

// What the processor identification instruction reports, every field 32 bits.
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

// A processor as seen by the selection: nothing but the flag is valid when it cannot be toggled.
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

// The running processor's identification instruction; null where it has none.
ProcessorLeafReader* IdentificationInstruction();

ProcessorIdentity IdentifyProcessor(ProcessorLeafReader* read = IdentificationInstruction());

// The code of a processor, by default of the running one.
std::int32_t DetectProcessorCode(const ProcessorIdentity& identity = IdentifyProcessor());

// Sets ProcessorLevel from a code. An unknown code gives UnknownProcessorCode and leaves the level alone.
// Not to be called while other threads run primitives.
StatusCode SelectProcessorLevel(std::int32_t code);

// Sets ProcessorLevel for a processor, by default the running one: level 0 for a code outside the table. Gives
// ProcessorNotVerified when there is no identification or the vendor is not the one that the table was made for; the
// level is set in every case. Without the identification instruction the code is 0 and the level 0.
StatusCode SelectProcessorLevelAuto(const ProcessorIdentity& identity = IdentifyProcessor());

}  // namespace norvala
