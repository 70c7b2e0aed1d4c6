#include "kit/proof/page_parts.h"

namespace norv {

const char kPageStyle[] = R"(
:root { color-scheme: light dark; --paper: #f6f5f2; --card: #fff; --ink: #1d1f24; --soft: #667; --line: #dcdad3;
  --accent: #2458c5; --well: #e9e7e1; }
@media (prefers-color-scheme: dark) { :root { --paper: #14161a; --card: #1d2026; --ink: #e9e9ec; --soft: #9aa0ac;
  --line: #333842; --accent: #86acff; --well: #101216; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink); font: 16px/1.55 system-ui, sans-serif; }
main, header, footer { max-width: 1120px; margin: 0 auto; padding: 0 20px; }
header { padding-top: 40px; }
h1 { font-size: 30px; line-height: 1.2; margin: 0 0 4px; letter-spacing: -.01em; }
h2 { font-size: 20px; margin: 0 0 2px; overflow-wrap: anywhere; }
.soft, footer, figcaption, dt { color: var(--soft); }
.soft { margin: 0 0 18px; overflow-wrap: anywhere; }
article { background: var(--card); border: 1px solid var(--line); border-radius: 14px; padding: 22px; margin: 22px 0; }
.failed { border-left: 5px solid #c8452f; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; }
th { color: var(--soft); font-weight: 500; text-align: left; }
th, td { padding: 7px 12px 7px 0; border-bottom: 1px solid var(--line); }
td.n, th.n { text-align: right; }
a { color: var(--accent); overflow-wrap: anywhere; }
.bar { display: flex; flex-wrap: wrap; gap: 6px; align-items: center; margin-bottom: 10px; }
.bar span { flex: 1; }
button { font: inherit; font-size: 14px; padding: 4px 13px; border: 1px solid var(--line); border-radius: 99px;
  background: none; color: var(--ink); cursor: pointer; }
button[aria-pressed=true] { background: var(--accent); border-color: var(--accent); color: var(--card); }
button:focus-visible, input:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
.stage { position: relative; overflow: hidden; border-radius: 10px; background: var(--well); }
.view { overflow: auto; max-height: 78vh; display: flex; }
.pane { position: relative; margin: auto; flex: none; width: 100%; --cut: 50%;
  background: repeating-conic-gradient(#8884 0 25%, #fff4 0 50%) 0 0 / 18px 18px; }
.pane[hidden] { display: none; }
.pane img { display: block; width: 100%; height: 100%; }
.clip { position: absolute; inset: 0; overflow: hidden; clip-path: inset(0 calc(100% - var(--cut)) 0 0);
  background: inherit; }
.clip img { position: absolute; }
.pixels img { image-rendering: pixelated; }
.edge { position: absolute; top: 0; bottom: 0; left: 50%; width: 2px; margin-left: -1px; background: #fff;
  box-shadow: 0 0 0 1px #0006; pointer-events: none; }
.knob { position: absolute; top: 50%; left: -21px; width: 44px; height: 44px; margin-top: -22px; border-radius: 50%;
  background: #fff; color: #222; box-shadow: 0 1px 6px #0008; display: grid; place-items: center; cursor: ew-resize;
  pointer-events: auto; touch-action: none; font-size: 17px; user-select: none; }
.tag { position: absolute; bottom: 10px; padding: 1px 10px; border-radius: 99px; background: #000a; color: #fff;
  font-size: 13px; pointer-events: none; }
.tag.b { left: 10px; } .tag.a { right: 10px; }
input[type=range] { width: 100%; height: 30px; margin: 6px 0 14px; accent-color: var(--accent); }
.facts { display: grid; grid-template-columns: minmax(0, 1fr) auto; gap: 8px 34px; align-items: start; }
@media (max-width: 700px) { .facts { grid-template-columns: minmax(0, 1fr); } }
dl { display: grid; grid-template-columns: max-content minmax(0, 1fr); gap: 4px 18px; margin: 0; }
dd { margin: 0; overflow-wrap: anywhere; }
code { display: block; padding: 10px 14px; border-radius: 8px; background: var(--well); overflow-x: auto;
  white-space: pre-wrap; overflow-wrap: anywhere; font: 13px/1.5 ui-monospace, monospace; }
figure { margin: 0; max-width: 260px; } figure img { width: 100%; image-rendering: pixelated; border-radius: 8px; }
figcaption { font-size: 13px; line-height: 1.4; }
footer { padding-bottom: 50px; font-size: 14px; }
)";

const char kPageScript[] = R"(
for (const viewer of document.querySelectorAll('.viewer')) {
  const view = viewer.querySelector('.view'), range = viewer.querySelector('input'), edge = viewer.querySelector('.edge');
  const panes = [...viewer.querySelectorAll('.pane')], parts = [...viewer.querySelectorAll('[data-part]')];
  const sizes = [...viewer.querySelectorAll('[data-zoom]')];
  let shown = panes[0], zoom = 0;
  const cut = () => {
    const part = range.value / range.max, box = shown.getBoundingClientRect(), frame = view.getBoundingClientRect();
    const x = frame.left + part * view.clientWidth - box.left;
    shown.style.setProperty('--cut', Math.min(Math.max(x, 0), box.width) + 'px');
    edge.style.left = 100 * part * view.clientWidth / frame.width + '%';
  };
  const fit = () => {
    const width = +shown.dataset.width, height = +shown.dataset.height;
    const whole = Math.min(view.clientWidth / width, .7 * innerHeight / height);
    const times = zoom || (whole > 1 ? Math.min(Math.floor(whole), 8) : whole);
    shown.style.width = width * times + 'px';
    shown.style.height = height * times + 'px';
    shown.classList.toggle('pixels', zoom > 0);
    sizes.forEach(b => b.setAttribute('aria-pressed', +b.dataset.zoom === zoom));
    cut();
  };
  const setZoom = to => {
    const x = (view.scrollLeft + view.clientWidth / 2) / view.scrollWidth;
    const y = (view.scrollTop + view.clientHeight / 2) / view.scrollHeight;
    zoom = to;
    fit();
    view.scrollTo(x * view.scrollWidth - view.clientWidth / 2, y * view.scrollHeight - view.clientHeight / 2);
    cut();
  };
  sizes.forEach(b => b.addEventListener('click', () => setZoom(+b.dataset.zoom)));
  parts.forEach((b, i) => b.addEventListener('click', () => {
    shown = panes[i];
    panes.forEach(p => p.hidden = p !== shown);
    parts.forEach(p => p.setAttribute('aria-pressed', p === b));
    fit();
  }));
  viewer.addEventListener('keydown', e => {
    const steps = [0, 1, 2, 4, 8], at = steps.indexOf(zoom) + (e.key === '+') - (e.key === '-');
    if ((e.key === '+' || e.key === '-') && steps[at] !== undefined) setZoom(steps[at]);
  });
  const knob = viewer.querySelector('.knob');
  const drag = e => {
    const frame = view.getBoundingClientRect();
    range.value = range.max * (e.clientX - frame.left) / view.clientWidth;
    cut();
  };
  knob.addEventListener('pointerdown', e => { knob.setPointerCapture(e.pointerId); e.preventDefault(); });
  knob.addEventListener('pointermove', e => { if (knob.hasPointerCapture(e.pointerId)) drag(e); });
  range.addEventListener('input', cut);
  view.addEventListener('scroll', cut);
  addEventListener('resize', fit);
  fit();
}
)";

}  // namespace norv
