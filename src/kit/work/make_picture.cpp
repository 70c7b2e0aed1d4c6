#include "kit/work/make_picture.h"

#include <memory>
#include <utility>

#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/work/receipts.h"
#include "kit/work/reported.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/memory.h"

namespace norv {
namespace {

// Where the time went.
struct Stages {
  double reading = 0, writing = 0;  // seconds
};

template <typename Action>
auto Timed(double& seconds, const Action& action) {
  struct Clock {
    double& sum;
    double begun = Seconds();
    ~Clock() { sum += Seconds() - begun; }
  } clock{seconds};
  return action();
}

PictureSource TimedSource(PictureSource source, const std::shared_ptr<Stages>& stages) {
  const PictureShape shape = source.shape;
  return {shape, [source = std::move(source), stages](Picture& rows, int32_t at, int32_t count) {
            Timed(stages->reading, [&] { source.read(rows, at, count); });
          }};
}

PictureSink TimedSink(const PictureSink& sink, const std::shared_ptr<Stages>& stages,
                      const std::function<void(int32_t rows)>& advanced) {
  const auto write = [sink, stages, advanced](Picture rows) {
    const int32_t count = rows.Height();
    Timed(stages->writing, [&] { sink.write(std::move(rows)); });
    advanced(count);
  };
  return {write, [sink, stages] { return Timed(stages->writing, sink.finish); }};
}

void TellStages(const Made& made, const Stages& stages) {
  Tell("%s: %d x %d pixels in %.2f s: reading %.2f, making %.2f, writing %.2f", made.output.c_str(), made.width,
       made.height, made.seconds, stages.reading, made.seconds - stages.reading - stages.writing, stages.writing);
}

// Formats whose libraries give all or nothing; in others only odd kinds are held.
bool IsReadAsAWhole(const std::string& path) {
  const std::string ending = ExtensionOf(path);
  return ending == "webp" || ending == "jxl" || ending == "heic" || ending == "avif";
}

// Reads the picture and takes the plan that follows from it.
void LookAt(OpenedPicture& picture) {
  Picture whole = AllRows(picture.source);
  picture.plan = WorkPlan(picture.plan.look(OpaqueLuminance(whole)));
  picture.source = HeldPicture(std::move(whole));
}

}  // namespace

OpenedPicture OpenForWork(const WorkOrder& order, const std::string& input) {
  const double since = Seconds();
  PictureSource source = OpenImage(input, order.choice.read);
  WorkPlan plan = order.work.plan(source.shape);
  plan.cost = plan.cost + CostOfFiles(source.shape, plan.result);
  if (IsReadAsAWhole(input)) plan.cost = plan.cost + CostOfHolding(source.shape, source.shape.bits / 8.0);
  return {input, std::move(source), std::move(plan), since};
}

Made MakePicture(const WorkOrder& order, OpenedPicture picture, const std::string& output, int32_t threads) {
  const WorkPlan& plan = picture.plan;
  WriteChoice choice = order.choice.write;
  choice.encoding.threads = threads;
  choice.overwrite |= picture.replace;
  RequireShowable(order, picture.input, output);
  const IssuedReceipt receipt(order, choice, plan, picture.input, output);
  choice.encoding.receipt = receipt.Inside();
  const Destination out(output, plan.result, choice, picture.input);
  if (plan.chosen && (picture.alone || RunManner().verbose))
    Tell("%s%s", picture.alone ? "" : (picture.input + ": ").c_str(), plan.chosen(threads).c_str());
  if (plan.look) LookAt(picture);
  const auto stages = std::make_shared<Stages>();
  std::optional<Certifier> certifier;
  const PictureShape from = picture.source.shape, to = plan.result;
  if (order.choice.certificate || (order.page && to.width >= from.width && to.height >= from.height)) {
    certifier.emplace(from, PictureSize{to.width, to.height}, plan.reduction, out.RoundingOf(to));
    picture.source = certifier->Input(std::move(picture.source));
  }
  PictureSource made = plan.make(TimedSource(std::move(picture.source), stages), threads);
  if (certifier) made = certifier->Result(std::move(made));
  Made record{.input = picture.input,
              .output = output,
              .width = made.shape.width,
              .height = made.shape.height,
              .method = plan.method};
  const auto advanced = [told = picture.advanced, height = made.shape.height](int32_t rows) {
    if (told) told(rows, height);
  };
  const PictureSink file = TimedSink(out.Create(made.shape), stages, advanced);
  CopyRows(std::move(made), file, order.work.doing);
  receipt.LayBeside();
  record.seconds = Seconds() - picture.since;
  record.memory = PeakMemory();
  if (certifier) record.certificate = certifier->Made();
  const std::string name = picture.alone ? "" : output + ": ";
  if (order.choice.certificate) Tell("%s%s", name.c_str(), InWords(*record.certificate).c_str());
  if (RunManner().verbose) TellStages(record, *stages);
  ReportPicture(order, record, certifier ? certifier->Map() : matrix());
  return record;
}

}  // namespace norv
