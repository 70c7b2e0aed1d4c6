#include "kit/proof/report.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "kit/formats/codec.h"
#include "kit/formats/streams.h"
#include "kit/guidance/text.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/picture_samples.h"
#include "kit/proof/html_text.h"
#include "kit/proof/page_parts.h"
#include "kit/proof/page_pictures.h"
#include "kit/proof/receipt.h"
#include "kit/proof/sha256.h"
#include "kit/work/settings_text.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace norv {
namespace {

std::string NameOf(const std::string& path) {
  return IsStandard(path) ? InputName(path) : FromNative(ToNative(path).filename());
}

std::string Size(const Made& made) { return Printed("%d × %d", made.width, made.height); }

std::string Button(const char* kind, const std::string& value, const std::string& name, bool pressed) {
  return std::string("<button type=button data-") + kind + "=\"" + value +
         "\" aria-pressed=" + (pressed ? "true" : "false") + ">" + name + "</button>";
}

std::string PaneOf(const ShownPair& pair, bool first) {
  const double scale = static_cast<double>(pair.shownWidth) / pair.width;
  return Printed(
             "<div class=pane data-width=%d data-height=%.0f%s style=\"aspect-ratio:%d/%d\"><img alt=\"after\" src=\"",
             pair.shownWidth, std::max(1.0, pair.height * scale), first ? "" : " hidden", pair.width, pair.height) +
         pair.after +
         Printed(
             "\"><div class=clip><img alt=\"before\" style=\"left:%.4f%%;top:%.4f%%;width:%.4f%%;height:%.4f%%\" "
             "src=\"",
             100 * pair.left, 100 * pair.top, 100 * pair.across, 100 * pair.down) +
         pair.before + "\"></div></div>\n";
}

std::string ViewerOf(const std::vector<ShownPair>& pairs) {
  std::string html = "<div class=viewer><div class=bar>";
  if (pairs.size() > 1)
    for (size_t i = 0; i < pairs.size(); ++i)
      html += Button("part", std::to_string(i), i > 0 ? pairs[i].name : "whole, reduced", i == 0);
  html += "<span></span>";
  for (const int zoom : {0, 1, 2, 4, 8})
    html += Button("zoom", std::to_string(zoom), zoom == 0 ? "fit" : Printed("%d:1", zoom), zoom == 0);
  html +=
      "</div>\n<div class=stage><div class=view tabindex=0 role=group aria-label=\"the picture, before and after\">";
  for (const ShownPair& pair : pairs) html += PaneOf(pair, &pair == pairs.data());
  return html +
         "</div><div class=edge><div class=knob aria-hidden=true>⇔</div></div><div class=\"tag b\">before</div>"
         "<div class=\"tag a\">after</div></div>\n"
         "<input type=range min=0 max=1000 step=10 value=500 aria-label=\"how much is shown as it was "
         "before\"></div>\n";
}

// Sixteen-fold, since there is little to be seen.
std::string FigureOf(const matrix& map, const Made& made) {
  return Printed("<figure><img alt=\"map of the differences\" style=\"aspect-ratio:%d/%d\" src=\"", made.width,
                 made.height) +
         MapUri(map, 16) +
         "\"><figcaption>Where the result, reduced again, is how far from the picture: black not at all, " +
         Printed("dark blue 0.06 grey levels, purple 0.25, orange 1, yellow 4; at most %.2g.",
                 made.certificate->largest) +
         "</figcaption></figure>";
}

std::string CertificateInWords(const Certificate& certificate) {
  std::string words = InWords(certificate);
  words[0] = 'R';
  return words;
}

std::string Row(const char* name, const std::string& html) {
  return std::string("<dt>") + name + "</dt><dd>" + html + "</dd>\n";
}

std::string FactsOf(const Made& made, const std::vector<std::string>& again, const matrix& map) {
  std::string html = "<div class=facts><dl>\n";
  html += Row("Done", HtmlText(made.method)) + Row("Size", Size(made) + " pixels");
  html +=
      Row("Time", Printed("%.2f s, at most %.0f MB of memory", made.seconds, static_cast<double>(made.memory) / 1e6));
  if (made.certificate) html += Row("Certificate", HtmlText(CertificateInWords(*made.certificate)));
  html += Row("Again", "<code>" + HtmlText(LineOfWords(again)) + "</code>") + "</dl>\n";
  if (made.certificate && map.mn > 0) html += FigureOf(map, made);
  return html + "</div>\n";
}

std::string HeadOf(const Made& made, size_t number) {
  return Printed("<article id=p%zu%s><h2>", number, made.Failed() ? " class=failed" : "") +
         HtmlText(NameOf(made.input)) + "</h2>\n<p class=soft>" + HtmlText(made.input) +
         (made.output.empty() ? "" : " → " + HtmlText(made.output)) + "</p>\n";
}

std::string RowOf(const Made& made, size_t number) {
  const std::string link = Printed("<tr><td><a href=\"#p%zu\">", number) + HtmlText(NameOf(made.input)) + "</a></td>";
  if (made.Failed()) return link + "<td colspan=4>" + HtmlText(made.error) + "</td></tr>\n";
  const std::string far = made.certificate ? Printed("%.2g", made.certificate->rms) : "";
  return link + "<td>" + HtmlText(made.method) + "</td><td class=n>" + Size(made) + "</td><td class=n>" +
         Printed("%.2f s", made.seconds) + "</td><td class=n>" + far + "</td></tr>\n";
}

std::string Sum(const char* text) {
  Sha256 sum;
  sum.Add(text, std::char_traits<char>::length(text));
  const std::string digits = sum.Digits();
  Bytes bytes;
  for (size_t i = 0; i < digits.size(); i += 2)
    bytes.push_back(static_cast<uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  return Base64(bytes);
}

// The policy leaves nothing to be asked for, and no script but this one to be run.
std::string PageHead(const std::string& title) {
  return "<!DOCTYPE html>\n<html lang=en><head><meta charset=utf-8>\n"
         "<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; img-src data:; style-src "
         "'unsafe-inline'; script-src 'sha256-" +
         Sum(kPageScript) +
         "'; base-uri 'none'; form-action 'none'\">\n"
         "<meta name=viewport content=\"width=device-width, initial-scale=1\">\n<title>" +
         HtmlText(title) + "</title>\n<style>" + kPageStyle + "</style></head><body>\n";
}

std::string PageEnd() {
  return "</main>\n<footer><p>Made by norvkit " + OwnVersion() +
         ". This page is one file and asks for nothing from outside. " +
         Printed(
             "Pictures of more than %d pixels a side are shown reduced, and in up to %d cutouts of %d × %d pixels as "
             "they are; beyond %zu MB of pictures, words alone are shown.",
             kShownSide, kShownParts, kPartSide, kPartSide, kPageBytes >> 20) +
         "</p></footer>\n<script>" + kPageScript + "</script></body></html>\n";
}

}  // namespace

Report::Report(std::string path, bool overwrite) : path_(std::move(path)) { RequireFree(path_, overwrite); }

void Report::Add(const Made& made, const std::vector<std::string>& again, const ReadChoice& read, const matrix& map) {
  std::string pictures;
  bool room = false;
  {
    const std::lock_guard hold(guard_);
    room = bytes_ < kPageBytes;
  }
  if (!made.Failed() && room) pictures = ViewerOf(ShownPairs(made.input, read, made.output));
  const std::string facts =
      made.Failed() ? "<p>" + HtmlText(made.error) + "</p>" : FactsOf(made, again, room ? map : matrix());
  Add(ReportEntry{made, std::move(pictures), facts});
}

void Report::Add(ReportEntry entry) {
  const std::lock_guard hold(guard_);
  if (!entry.made.Failed() && bytes_ + entry.pictures.size() > kPageBytes + kPageBytes / 4)
    entry.pictures = "<p class=soft>The page has no room for more pictures.</p>";
  bytes_ += entry.pictures.size() + entry.facts.size();
  entries_.push_back(std::move(entry));
}

std::vector<ReportEntry> Report::Take() {
  const std::lock_guard hold(guard_);
  return std::exchange(entries_, {});
}

void Report::Write() {
  const std::lock_guard hold(guard_);
  if (entries_.empty()) return;
  size_t failed = 0;
  for (const ReportEntry& entry : entries_) failed += entry.made.Failed();
  const bool one = entries_.size() == 1;
  const std::string title = one ? NameOf(entries_[0].made.input) : Printed("%zu pictures", entries_.size());
  std::string html = PageHead(title + " – norvkit") + "<header><h1>" + (one ? "Before and after" : title) + "</h1>\n";
  html += "<p class=soft>" +
          (one ? HtmlText(entries_[0].made.method)
               : Printed("%zu made", entries_.size() - failed) + (failed > 0 ? Printed(", %zu failed", failed) : "")) +
          "</p></header>\n<main>\n";
  if (!one) {
    html +=
        "<div class=scroll><table><tr><th>Picture<th>Done<th class=n>Pixels<th class=n>Time<th class=n>"
        "Reduced again: root mean square, grey levels</tr>\n";
    for (size_t i = 0; i < entries_.size(); ++i) html += RowOf(entries_[i].made, i + 1);
    html += "</table></div>\n";
  }
  FileOut file(path_);
  const auto put = [&](const std::string& text) { file.Array(text.data(), text.size()); };
  put(html);
  for (size_t i = 0; i < entries_.size(); ++i)
    put(HeadOf(entries_[i].made, i + 1) + entries_[i].pictures + entries_[i].facts + "</article>\n");
  put(PageEnd());
  if (!file.Commit()) throw SaidFailure();
}

}  // namespace norv
