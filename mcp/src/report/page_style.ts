// How the report page looks, light and dark.

export const pageStyle = `
:root {
  color-scheme: light dark;
  --ground: #ffffff; --panel: #f4f4f6; --ink: #1b1b1f; --faint: #55565e; --line: #d5d6dc;
  --chosen: #dfe7fb; --link: #1d4ed8; --bad: #b3261e; --badGround: #fdecea;
  --odd: #7a4b00; --oddGround: #fff3dc; --good: #14632f;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ground: #17181c; --panel: #1f2026; --ink: #e6e6ea; --faint: #a9abb5; --line: #383a43;
    --chosen: #2b3a5e; --link: #9dbcff; --bad: #ffb4ab; --badGround: #4a1d1a;
    --odd: #ffd08a; --oddGround: #40310f; --good: #8fdba6;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--ink); font: 15px/1.5 system-ui, sans-serif; }
header { padding: 12px 20px; border-bottom: 1px solid var(--line); }
h1 { margin: 0; font-size: 18px; }
header p { margin: 2px 0 0; color: var(--faint); }
kbd { border: 1px solid var(--line); border-radius: 4px; padding: 0 5px; font: 12px/1.6 monospace; color: var(--ink); }
nav ol { margin: 0; padding: 8px; list-style: none; counter-reset: step; }
nav li { counter-increment: step; }
nav a {
  display: grid; grid-template-columns: 34px 1fr auto; gap: 2px 8px; padding: 5px 8px;
  border-radius: 6px; color: var(--ink); text-decoration: none; overflow-wrap: anywhere;
}
nav a::before { content: counter(step); color: var(--faint); text-align: right; }
nav .time { grid-column: 3; grid-row: 1; color: var(--faint); font-variant-numeric: tabular-nums; }
nav .title { grid-column: 2; }
nav .badge { grid-column: 2 / 4; }
nav a.notice .title, nav a.look .title { color: var(--faint); }
nav a:hover { background: var(--line); }
nav a[aria-current] { background: var(--chosen); }
nav a[aria-current], nav a[aria-current] .time, nav a.done[aria-current] .title, nav a.notice[aria-current] .title, nav a[aria-current]::before { color: var(--ink); }
a:focus-visible, summary:focus-visible, pre:focus-visible, main:focus-visible { outline: 2px solid var(--link); outline-offset: 1px; }
nav a.refused .title, .refused .badge { color: var(--bad); }
nav a.unknown .title, .unknown .badge { color: var(--odd); }
section { padding: 16px 24px 40px; border-bottom: 1px solid var(--line); overflow-wrap: anywhere; }
h2 { margin: 0; font-size: 20px; }
.when { margin: 2px 0 12px; color: var(--faint); }
.refusal { margin: 0 0 12px; padding: 10px 14px; border-left: 4px solid var(--bad); background: var(--badGround); color: var(--ink); }
section.unknown { border-left: 4px solid var(--odd); }
.facts { display: flex; flex-wrap: wrap; gap: 0 24px; align-items: flex-start; }
figure { margin: 0 0 16px; max-width: 100%; }
figure svg { display: block; width: auto; height: auto; max-width: 100%; max-height: 62vh; border: 1px solid var(--line); background: var(--panel); }
figcaption, .missing { color: var(--faint); }
rect { fill: none; vector-effect: non-scaling-stroke; }
rect.mark { stroke: #d3123c; stroke-width: 3px; }
rect.change { stroke: #1b6b36; stroke-width: 2px; stroke-dasharray: 5 3; }
rect.halo { stroke: #ffffff; stroke-width: 6px; stroke-dasharray: none; stroke-opacity: 0.75; }
rect.change.halo { stroke-width: 4px; }
.store { position: absolute; width: 0; height: 0; }
dl { display: grid; grid-template-columns: 76px 1fr; gap: 8px 16px; margin: 0 0 16px; flex: 1 1 380px; align-content: start; }
dt { font-weight: 600; }
dd { margin: 0; }
dd ul { margin: 0; padding-left: 18px; }
.argument { margin-left: 10px; }
code, pre { font: 13px/1.5 ui-monospace, monospace; }
.appeared b { color: var(--good); }
.gone b { color: var(--bad); }
.changed b { color: var(--link); }
summary { cursor: pointer; }
pre { max-height: 60vh; overflow: auto; padding: 10px; background: var(--panel); border: 1px solid var(--line); white-space: pre-wrap; }
@media (min-width: 800px) {
  .live body { display: grid; grid-template: auto 1fr / minmax(240px, 340px) 1fr; height: 100vh; }
  .live header { grid-column: 1 / 3; }
  .live nav { overflow-y: auto; background: var(--panel); border-right: 1px solid var(--line); }
  .live main { overflow-y: auto; }
  .live section { border-bottom: 0; }
}
html:not(.live) .keys { display: none; }
`;
