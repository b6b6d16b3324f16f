#include <cstdlib>

#include "bench.h"

namespace norvala_bench {
namespace {

// Keeps the compiler from leaving out a pair of malloc and free.
void* volatile lastBlock;

template <class Allocate, class Release>
Work AllocateAndRelease(Allocate allocate, Release release) {
  return [=] {
    lastBlock = allocate();
    release(lastBlock);
  };
}

Prepare RuntimeHeap(int pixelBytes) {
  return [pixelBytes](Size s) {
    const auto bytes =
        static_cast<std::size_t>(pixelBytes) * static_cast<std::size_t>(s.width) * static_cast<std::size_t>(s.height);
    return AllocateAndRelease([bytes] { return std::malloc(bytes); }, std::free);
  };
}

template <class T>
void AddVectorRow(const std::string& name, T* (*allocate)(int32_t)) {
  Row row(name, [allocate](Size s) {
    return AllocateAndRelease([=] { return allocate(s.width * s.height); }, Norvala_1DFree);
  });
  row.Peer("malloc", RuntimeHeap(sizeof(T)));
}

template <class T>
void AddImageRow(const std::string& name, T* (*allocate)(int32_t, int32_t, int32_t*)) {
  Row row(name, [allocate](Size s) {
    return AllocateAndRelease(
        [=] {
          int32_t step;
          return allocate(s.width, s.height, &step);
        },
        Norvala_2DFree);
  });
  row.Peer("malloc", RuntimeHeap(sizeof(T)));
}

// What a call costs apart from its pixels, and what this program itself adds to it.
template <class Call>
void AddCallRow(const std::string& name, Call call) {
  Row("Call/" + name, [call](Size) -> Work { return call; }, {{1, 1}});
}

void AddCallRows() {
  static BW8 bytes[3];
  static FLOAT32 floats[2];
  static BW32 words[3];
  AddCallRow("nothing", [] {});
  AddCallRow("GetVersion", [] { Norvala_GetVersion(); });
  AddCallRow("CopyBW8", [] { Norvala_CopyBW8(bytes, 1, bytes + 1, 1, 1, 1); });
  AddCallRow("SetFLOAT32", [] { Norvala_SetFLOAT32(1.0F, floats, 4, 1, 1); });
  AddCallRow("ConvertFLOAT32toBW8", [] { Norvala_ConvertFLOAT32toBW8(floats, 4, bytes, 1, 1, 1, 1); });
  AddCallRow("AndBW32", [] { Norvala_AndBW32(words, 4, words + 1, 4, words + 2, 4, 1, 1); });
  AddCallRow("AddFLOAT32_C1IR", [] { Norvala_AddFLOAT32_C1IR(floats, 4, floats + 1, 4, 1, 1); });
  AddCallRow("MeanBW8_C1R", [] {
    double mean;
    Norvala_MeanBW8_C1R(bytes, 1, 1, 1, &mean);
  });
  AddCallRow("RGBToGray_BW8_C3C1R", [] { Norvala_RGBToGray_BW8_C3C1R(bytes, 3, bytes, 1, 1, 1); });
  AddCallRow("FilterColumnPipelineGetBufferSizeBW8", [] {
    int32_t size;
    Norvala_FilterColumnPipelineGetBufferSizeBW8(640, 480, 5, &size);
  });
}

}  // namespace

void AddFrameRows() {
  AddCallRows();
  AddVectorRow("1DMallocBW8", Norvala_1DMallocBW8);
  AddVectorRow("1DMallocFLOAT32", Norvala_1DMallocFLOAT32);
  AddVectorRow("1DMallocINT32", Norvala_1DMallocINT32);
  AddVectorRow("1DMallocFLOAT64", Norvala_1DMallocFLOAT64);
  AddImageRow("2DMallocBW8", Norvala_2DMallocBW8);
  AddImageRow("2DMallocFLOAT32", Norvala_2DMallocFLOAT32);
  AddImageRow("2DMallocComplexFLOAT32Number", Norvala_2DMallocComplexFLOAT32Number);
}

}  // namespace norvala_bench
