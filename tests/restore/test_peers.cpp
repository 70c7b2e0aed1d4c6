// Restorations that several make together: here threads of one process, each with planes of its own.
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "restore/restore_image.h"
#include "restore/restore_plane.h"
#include "support/random_image.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

class Mail {
 public:
  void Put(int32_t from, int32_t to, std::string bytes) {
    const std::lock_guard hold(mutex_);
    letters_[{from, to}].push_back(std::move(bytes));
    come_.notify_all();
  }
  std::string Take(int32_t from, int32_t to) {
    std::unique_lock hold(mutex_);
    std::deque<std::string>& box = letters_[{from, to}];
    come_.wait(hold, [&] { return !box.empty(); });
    std::string bytes = std::move(box.front());
    box.pop_front();
    return bytes;
  }

 private:
  std::mutex mutex_;
  std::condition_variable come_;
  std::map<std::pair<int32_t, int32_t>, std::deque<std::string>> letters_;
};

class Threads : public Peers {
 public:
  Threads(Mail& mail, int32_t number, int32_t count) : mail_(mail), number_(number), count_(count) {}
  int32_t Number() const override { return number_; }
  int32_t Count() const override { return count_; }
  void Send(int32_t to, std::string&& bytes) override { mail_.Put(number_, to, std::move(bytes)); }
  std::string Receive(int32_t from) override { return mail_.Take(from, number_); }

 private:
  Mail& mail_;
  int32_t number_, count_;
};

// What `count` of them make of the image together: `restored` gets a part, of which the rows at hand are cut out, and
// gives the part's own rows.
template <typename Restored>
FloatImage Together(const FloatImage& image, const RestoreParameters& p, int32_t count, bool whole,
                    const Restored& restored) {
  Mail mail;
  std::vector<FloatImage> parts(static_cast<size_t>(count));
  std::vector<std::thread> threads;
  for (int32_t number = 0; number < count; ++number)
    threads.emplace_back([&, number] {
      Threads peers(mail, number, count);
      const ImagePart part{image.height, RowsAtHand(p, image.height, whole, peers), peers};
      FloatImage held = image;
      for (int32_t k = 0; k < held.planes; ++k) held.plane[k] = RowsAlone(std::move(held.plane[k]), part.rows);
      held.RefreshSize();
      restored(held, part);
      parts[static_cast<size_t>(number)] = std::move(held);
    });
  for (std::thread& thread : threads) thread.join();
  FloatImage large(image.width * p.factor, image.height * p.factor, image.format);
  int64_t at = 0;
  for (const FloatImage& part : parts) {
    for (int32_t k = 0; k < large.planes; ++k) std::copy_n(part.plane[k].x, part.plane[k].mn, large.plane[k].x + at);
    at += part.count;
  }
  CHECK(at == large.count);
  return large;
}

void CheckTogether(const FloatImage& image, const RestoreParameters& p, int32_t most) {
  FloatImage alone = image;
  RestoreImage(alone, p);
  const int32_t blocks = RowRuns(image.height, p.factor).Blocks();
  for (int32_t count = 2; count <= std::min(most, blocks); ++count) {
    const FloatImage large =
        Together(image, p, count, p.representation == 5, [&](FloatImage& held, const ImagePart& part) {
          StandingTeam team(count == 3 ? 2 : 1);
          RestoreImage(held, part, p, nullptr, team);
        });
    CAPTURE(count);
    for (int32_t k = 0; k < large.planes; ++k) CHECK(SameBits(large.plane[k], alone.plane[k]));
  }
}

}  // namespace

TEST_CASE("peers restore an image to the same bits, whatever their number") {
  // Blocks shorter than the filters, of one small row and more; smoothing that folds, a plane wide enough for teams.
  const int32_t shapes[][4] = {{9, 70, 2, -1}, {5, 150, 1, -35}, {4, 23, 7, 5}, {3, 5, 64, -1}, {300, 97, 2, 1}};
  for (int32_t type = -1; type <= 7; ++type)
    for (const int32_t* shape : shapes) {
      RestoreParameters p = TestParameters(type, shape[2], type == 1 ? 4 : 1);
      p.kernelCode = shape[3], p.emphasis = 0.4f, p.edgeThreshold = 40;
      if (shape[0] > 9) p.iterations = 1;
      if (type == 2) p.orientationScale = 50;
      INFO("type ", type, " of ", shape[0], " x ", shape[1], " factor ", shape[2]);
      CheckTogether(RandomColours(shape[0], shape[1], kDefaultFormat, 20, 230), p, 4);
    }
}

TEST_CASE("peers: every representation, a fourth plane, no iterations") {
  for (const int32_t representation : {0, 1, 2, 3, 4, 5, 9})
    for (const int32_t format : {kDefaultFormat, kWithFourth | 7}) {
      RestoreParameters p = TestParameters(3, 2, representation);
      INFO("representation ", representation, " format ", format);
      CheckTogether(RandomColours(8, 90, format, 20, 230), p, 3);
      p.iterations = representation == 4 ? -1 : 0;
      CheckTogether(RandomColours(8, 70, format, 20, 230), p, 2);
    }
}

TEST_CASE("peers: planes that are no colours, and values that become NaN on all of them alike") {
  FloatImage image = RandomColours(8, 120, kDefaultFormat, 20, 230);
  for (const bool broken : {false, true}) {
    if (broken) image.plane[0].z[3][3] = std::numeric_limits<float>::quiet_NaN();
    const RestoreParameters p = TestParameters(5, 2);
    std::vector<matrix> alone(image.plane.begin(), image.plane.begin() + 3);
    RestorePlanes(alone, p, nullptr, StandingTeam::Alone());
    const FloatImage large = Together(image, p, 3, false, [&](FloatImage& held, const ImagePart& part) {
      RestorePlanes({held.plane.data(), 3}, part, p, nullptr, StandingTeam::Alone());
      held.RefreshSize();
    });
    for (size_t k = 0; k < 3; ++k) CHECK(SameBits(large.plane[k], alone[k]));
  }
}
