// Training data through files: a set of 1 GB shuffled where it stands, beside a form that takes vectors one by one, and
// the pairs of a 4-megapixel picture beside writing as many bytes. Files in the temporary folder; what is shuffled lies
// in the system's cache and is not flushed to the disk.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numeric>
#include <vector>

#include "linear/random.h"
#include "train/training_pairs.h"

using namespace norv;

namespace {

constexpr TrainingHeader kHeader{4807692, 48, 4};  // 1 GB

std::string TemporaryFile(const char* name) { return std::filesystem::temp_directory_path() / name; }

class SetFile {
 public:
  SetFile() {
    FileOut out(path, Durability::scratch);
    for (const int32_t field : {kHeader.N, kHeader.Nin, kHeader.Ny}) out.Field(field);
    std::vector<float> record(static_cast<size_t>(kHeader.RecordBytes() / 4), 0.5f);
    for (int32_t i = 0; i < kHeader.N; ++i) {
      record[0] = static_cast<float>(i);
      out.Array(record.data(), record.size());
    }
    out.Commit();
  }
  ~SetFile() { RemoveFile(path); }

  const std::string path = TemporaryFile("norv-bench-set");
};

void ShuffleFile(benchmark::State& state) {
  const SetFile file;
  for (auto _ : state) ShuffleTrainingFile(file.path, Durability::scratch);
  state.SetBytesProcessed(state.iterations() * kHeader.FileBytes());
}
BENCHMARK(ShuffleFile)->Unit(benchmark::kMillisecond);

using Vectors = std::vector<std::unique_ptr<float[]>>;
using Stream = std::unique_ptr<FILE, decltype(&std::fclose)>;

std::vector<int32_t> OrderByLookedUpKeys(int32_t n) {
  std::vector<float> key(static_cast<size_t>(n));
  for (float& k : key) {
    const int32_t low = NextRandom(), high = NextRandom();
    k = static_cast<float>((high * 10000 + low) * 1e-8 + 5e-9);
  }
  std::vector<int32_t> index(key.size());
  std::iota(index.begin(), index.end(), 0);
  std::sort(index.begin(), index.end(), [&](int32_t a, int32_t b) { return key[a] < key[b]; });
  return index;
}

void ShuffleByVectors(const std::string& path) {
  constexpr size_t kInputs = kHeader.Nin, kTargets = kHeader.Ny;
  Vectors inputs(kHeader.N), targets(kHeader.N);
  int32_t header[3];
  {
    const Stream in(std::fopen(path.c_str(), "rb"), &std::fclose);
    size_t count = std::fread(header, sizeof header, 1, in.get());
    const auto take = [&](size_t n) {
      auto vector = std::make_unique<float[]>(n);
      count += std::fread(vector.get(), sizeof(float), n, in.get());
      return vector;
    };
    for (const int32_t place : OrderByLookedUpKeys(kHeader.N)) {
      inputs[place] = take(kInputs);
      targets[place] = take(kTargets);
    }
    benchmark::DoNotOptimize(count);
  }
  const Stream out(std::fopen(path.c_str(), "wb"), &std::fclose);
  std::fwrite(header, sizeof header, 1, out.get());
  for (int32_t i = 0; i < kHeader.N; ++i) {
    std::fwrite(inputs[i].get(), sizeof(float), kInputs, out.get());
    std::fwrite(targets[i].get(), sizeof(float), kTargets, out.get());
  }
}

void ShuffleFileByVectors(benchmark::State& state) {
  const SetFile file;
  for (auto _ : state) ShuffleByVectors(file.path);
  state.SetBytesProcessed(state.iterations() * kHeader.FileBytes());
}
BENCHMARK(ShuffleFileByVectors)->Unit(benchmark::kMillisecond);

// Both flush what they write.
constexpr int32_t kPictureSide = 2000;
constexpr int64_t kPairs = int64_t{kPictureSide / 2 - 6} * (kPictureSide / 2 - 6) * 8;

void WritePairs(benchmark::State& state) {
  const std::string path = TemporaryFile("norv-bench-pairs");
  for (auto _ : state) {
    matrix picture(kPictureSide, kPictureSide);
    for (int32_t i = 0; i < picture.mn; ++i) picture.x[i] = static_cast<float>(i % 251);
    WriteTrainingPairs(path, picture, 48, 4, 0);
  }
  state.SetBytesProcessed(state.iterations() * kPairs * kHeader.RecordBytes());
  RemoveFile(path);
}
BENCHMARK(WritePairs)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteAsManyBytes(benchmark::State& state) {
  const std::string path = TemporaryFile("norv-bench-bytes");
  std::vector<float> piece(size_t{1} << 18, 0.5f);
  for (auto _ : state) {
    FileOut out(path);
    for (int64_t left = kPairs * kHeader.RecordBytes() / 4; left > 0; left -= static_cast<int64_t>(piece.size()))
      out.Array(piece.data(), static_cast<size_t>(std::min<int64_t>(left, static_cast<int64_t>(piece.size()))));
    out.Commit();
  }
  state.SetBytesProcessed(state.iterations() * kPairs * kHeader.RecordBytes());
  RemoveFile(path);
}
BENCHMARK(WriteAsManyBytes)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
