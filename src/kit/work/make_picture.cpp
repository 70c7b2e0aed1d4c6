#include "kit/work/make_picture.h"

#include <memory>
#include <utility>

#include "kit/formats/streams.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/ranks/ranks.h"
#include "kit/work/receipts.h"
#include "kit/work/reported.h"
#include "kit/work/row_share.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/memory.h"
#include "platform/native/before_rename.h"
#include "platform/threads/stages.h"

namespace norv {
namespace {

PictureSource TimedSource(PictureSource source) {
  const PictureShape shape = source.shape;
  const auto only = source.only;
  return {shape,
          [source = std::move(source)](Picture& rows, int32_t at, int32_t count) {
            const InStage decoding(Stage::decoding);
            source.read(rows, at, count);
          },
          only};
}

PictureSink TimedSink(const PictureSink& sink, const std::function<void(int32_t rows)>& advanced) {
  const auto write = [sink, advanced](Picture rows) {
    const InStage encoding(Stage::encoding);
    const int32_t count = rows.Height();
    sink.write(std::move(rows));
    advanced(count);
  };
  const auto finish = [sink] {
    const InStage encoding(Stage::encoding);
    return sink.finish();
  };
  return {write, finish};
}

// Stages are those of the run, which several pictures share.
void TellStages(const Made& made, bool alone) {
  Tell("%s: %d x %d pixels in %.2f s", made.output.c_str(), made.width, made.height, made.seconds);
  const StageSeconds of = SecondsOfStages();
  if (alone)
    Tell("processor seconds: decoding %.2f, working %.2f, encoding %.2f", of.decoding, of.working, of.encoding);
}

// Formats whose libraries give all or nothing; in others only odd kinds are held.
bool IsReadAsAWhole(const std::string& path) {
  const std::string ending = ExtensionOf(path);
  return ending == "webp" || ending == "jxl" || ending == "heic" || ending == "avif";
}

// Reads the picture and takes the plan that follows from it.
void LookAt(OpenedPicture& picture) {
  Picture whole = AllRows(TimedSource(picture.source));
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

void HelpWithPicture(const WorkOrder& order, const std::string& input, int32_t threads) {
  if (!World().AwaitCall()) return;
  OpenedPicture picture = OpenForWork(order, input);
  HelpWithRows(picture.plan.make(std::move(picture.source), threads), order.choice.write);
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
  std::optional<Certifier> certifier;
  const PictureShape from = picture.source.shape, to = plan.result;
  if (order.choice.certificate || (order.page && to.width >= from.width && to.height >= from.height)) {
    certifier.emplace(from, PictureSize{to.width, to.height}, plan.reduction, out.RoundingOf(to));
    picture.source = certifier->Input(std::move(picture.source));
  }
  PictureSource made = plan.make(TimedSource(std::move(picture.source)), threads);
  if (certifier) made = certifier->Result(std::move(made));
  Made record{.input = picture.input,
              .output = output,
              .width = made.shape.width,
              .height = made.shape.height,
              .method = plan.method};
  const auto advanced = [told = picture.advanced, height = made.shape.height](int32_t rows) {
    if (told) told(rows, height);
  };
  const auto seen = std::make_shared<Finiteness>();
  const PictureSink file = TimedSink(out.Create(made.shape, seen), advanced);
  if (picture.alone && !IsStandard(picture.input) && MayShareRows(made))
    ShareRows(std::move(made), file, output, LastTemporary(), choice, *seen, order.work.doing);
  else
    CopyRows(std::move(made), file, order.work.doing);
  receipt.LayBeside();
  record.seconds = Seconds() - picture.since;
  record.memory = PeakMemory();
  if (certifier) record.certificate = certifier->Made();
  const std::string name = picture.alone ? "" : output + ": ";
  if (order.choice.certificate) Tell("%s%s", name.c_str(), InWords(*record.certificate).c_str());
  if (RunManner().verbose) TellStages(record, picture.alone);
  ReportPicture(order, record, certifier ? certifier->Map() : matrix());
  return record;
}

}  // namespace norv
