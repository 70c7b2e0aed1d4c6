// Files are replaced as a whole or not at all.
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <sys/wait.h>

#include "platform/file.h"
#include "platform/native/native_file.h"
#include "support/test.h"

namespace {

size_t Entries(const ScratchFolder& folder) {
  return static_cast<size_t>(std::distance(fs::directory_iterator(folder.Path()), {}));
}

// The next field, or the one at a place.
template <typename T>
T Next(FileIn& in, int64_t position = -1) {
  T value{};
  if (position >= 0) in.Seek(position);
  in.Field(value);
  return value;
}

}  // namespace

TEST_CASE("fields and arrays of any size come back as they were") {
  const ScratchFolder folder;
  std::vector<float> large(700001);
  for (size_t i = 0; i < large.size(); ++i) large[i] = static_cast<float>(i) * 0.25f;
  {
    FileOut out(folder / "a");
    out.Field(int32_t{-7});
    out.Array(large.data(), 3);
    out.Array(large.data(), large.size());
    out.Field(2.5f);
    REQUIRE(out.Commit());
  }
  CHECK(fs::file_size(folder / "a") == 4 + 12 + 4 * large.size() + 4);
  FileIn in(folder / "a");
  REQUIRE(in.IsOpen());
  std::vector<float> first(3), rest(large.size());
  CHECK(Next<int32_t>(in) == -7);
  in.Array(first.data(), 3);
  in.Array(rest.data(), rest.size());
  CHECK((first[2] == 0.5f && rest == large));
  CHECK(Next<float>(in) == 2.5f);
  CHECK(in.Complete());
}

TEST_CASE("floats that are no number are written as the same one, all others as they are") {
  const ScratchFolder folder;
  const std::vector<uint32_t> bits{0xffc00000, 0x80000000, 0x7fc12345, 0xff800000, 0x7f812345, 0x00000001, 0xffffffff};
  const uint32_t one = 0x7fc00000;
  std::vector<float> floats(bits.size());
  std::memcpy(floats.data(), bits.data(), 4 * bits.size());
  {
    FileOut out(folder / "a");
    out.Array(floats.data(), floats.size());
    out.Field(floats[0]);
    out.Array(bits.data(), 1);
    REQUIRE(out.Commit());
  }
  FileIn in(folder / "a");
  for (const uint32_t written : {one, bits[1], one, bits[3], one, bits[5], one, one, bits[0]})
    CHECK(Next<uint32_t>(in) == written);
}

TEST_CASE("what lies behind the end of a file reads as zeros and is noticed") {
  const ScratchFolder folder;
  WriteBytes(folder / "short", std::string(6, 'x'));
  FileIn in(folder / "short");
  std::vector<uint8_t> rest(5, 9);
  CHECK(Next<int32_t>(in) == 0x78787878);
  CHECK(in.Complete());
  in.Array(rest.data(), rest.size());
  CHECK(rest == std::vector<uint8_t>{'x', 'x', 0, 0, 0});
  CHECK_FALSE(in.Complete());

  FileIn skipping(folder / "short");
  skipping.Skip(5);
  CHECK(Next<char>(skipping) == 'x');
  CHECK(skipping.Complete());
  skipping.Skip(1);
  CHECK_FALSE(skipping.Complete());

  CHECK_FALSE(FileIn(folder / "none").IsOpen());
  CHECK_FALSE(FileIn(folder.Path()).IsOpen());
}

TEST_CASE("reading and writing move to places in the file, beyond 4 GiB too") {
  const ScratchFolder folder;
  constexpr int64_t kFar = (int64_t{1} << 32) + 5;
  {
    FileOut out(folder / "a");
    REQUIRE(out.CanSeek());
    out.Field(int32_t{1});
    out.Seek(kFar);
    out.Field(int32_t{2});
    out.Seek(4);
    out.Field(int32_t{3});
    REQUIRE(out.Commit());
  }
  CHECK(fs::file_size(folder / "a") == static_cast<uintmax_t>(kFar) + 4);
  FileIn in(folder / "a");
  REQUIRE(in.CanSeek());
  CHECK(Next<int32_t>(in, kFar) == 2);
  CHECK(Next<int32_t>(in, 4) == 3);
  CHECK(Next<int32_t>(in, 1000000) == 0);
  CHECK(in.Complete());
  // What is missing at one place does not touch the others.
  CHECK(Next<int32_t>(in, kFar + 2) == 0);
  CHECK_FALSE(in.Complete());
  CHECK(Next<int32_t>(in, 0) == 1);
  CHECK_FALSE(in.Complete());
}

TEST_CASE("what is read at any places, in any lengths, is what stands there") {
  const ScratchFolder folder;
  std::string bytes(3000000, 0);
  uint32_t noise = 1;
  const auto next = [&noise] { return (noise = noise * 1664525 + 1013904223) >> 8; };
  for (char& byte : bytes) byte = static_cast<char>(next());
  WriteBytes(folder / "data", bytes);
  FileIn in(folder / "data");
  std::string part(2000000, 0);
  for (int i = 0; i < 300; ++i) {
    const size_t length = i % 10 == 0 ? next() % part.size() : next() % 5000, at = next() % (bytes.size() - length);
    if (i % 3 == 0)
      in.Seek(static_cast<int64_t>(at));
    else if (i % 3 == 1)
      in.Seek(0), in.Skip(static_cast<int64_t>(at));
    else
      in.Seek(static_cast<int64_t>(at + 40)), in.Seek(static_cast<int64_t>(at));
    in.Array(part.data(), length);
    REQUIRE(part.compare(0, length, bytes, at, length) == 0);
  }
  CHECK(in.Complete());
}

TEST_CASE("a file that is not committed, or cannot be, leaves the old one and nothing else") {
  const ScratchFolder folder;
  WriteBytes(folder / "data", "old");
  {
    FileOut out(folder / "data");
    out.Field(1.0f);
  }
  CHECK(ReadBytes(folder / "data") == "old");
  CHECK(Entries(folder) == 1);

  const auto refusal = [](const std::string& path) {
    const std::string line = ErrorsOf([&] {
      FileOut out(path);
      out.Field(1.0f);
      CHECK_FALSE(out.Commit());
    });
    return line.substr(line.find("cannot write"));
  };
  fs::create_directory(folder / "directory");
  for (const auto& [path, reason] : {std::pair{folder / "directory", "Is a directory"},
                                     {folder / "no/a", "No such file or directory"},
                                     {std::string("/dev/full"), "No space left on device"}})
    CHECK(refusal(path) == "cannot write " + path + ": " + reason + "\n");
  CHECK(Entries(folder) == 2);
}

TEST_CASE("permissions stay, symbolic links stay links, abandoned files go and live ones stay") {
  const ScratchFolder folder;
  WriteBytes(folder / "target", "old");
  chmod((folder / "target").c_str(), 0640);
  fs::create_symlink("target", folder / "link");
  WriteBytes(folder / "other.99-0.norv-tmp", "left by a killed run");
  FileOut live(folder / "live");
  live.Field(1.0f);
  FileOut out(folder / "link");
  out.Field(int32_t{0x31323334});
  REQUIRE(out.Commit());
  CHECK(ReadBytes(folder / "target") == "4321");
  CHECK(fs::is_symlink(folder / "link"));
  CHECK(fs::status(folder / "target").permissions() == fs::perms(0640));
  CHECK_FALSE(fs::exists(folder / "other.99-0.norv-tmp"));
  CHECK(live.Commit());
  CHECK(Entries(folder) == 3);
}

TEST_CASE("whatever ends a run but a kill takes its half-written file along") {
  const ScratchFolder folder;
  WriteBytes(folder / "data", "old");
  const auto endWith = [&](int signal) {
    const pid_t child = fork();
    if (child == 0) {
      FileOut out(folder / "data", Durability::scratch);
      const std::vector<float> large(1 << 19);
      out.Array(large.data(), large.size());
      if (signal == 0) std::exit(1);
      raise(signal);
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    CHECK(ReadBytes(folder / "data") == "old");
    return status;
  };
  for (const int signal : {SIGHUP, SIGXCPU}) {
    CHECK(WTERMSIG(endWith(signal)) == signal);
    CHECK(Entries(folder) == 1);
  }
  CHECK(WEXITSTATUS(endWith(0)) == 1);
  CHECK(Entries(folder) == 1);
  endWith(SIGKILL);
  CHECK(Entries(folder) == 2);
  RemoveAbandonedFiles(folder / "data");
  CHECK(Entries(folder) == 1);
}
