// The report as one HTML page: the steps on the left, the chosen one on the right.
//
// Everything is in the page itself, and its policy lets it load nothing. Each picture stands in it
// once, however many steps show it. Without its script the page shows all steps one below another.

import { createHash } from 'node:crypto';
import { bounded, markup, type Html } from './html.js';
import { depthsOf, outlineOf, type Observation, type Picture, type Rect } from './observation.js';
import { pageScript } from './page_script.js';
import { pageStyle } from './page_style.js';
import type { Step } from './steps.js';

export interface Report {
  /** The name of the recording. */
  name: string;
  startedAt: string | undefined;
  steps: Step[];
  /** Lines of the recording that could not be read. */
  damaged: number;
  /** The pictures as data addresses, by their file; one that is missing could not be read. */
  pictures: ReadonlyMap<string, string>;
}

const maxOutline = 500;
const maxChanges = 60;
const maxText = 4000;

export function pageOf(report: Report): string {
  const policy = [
    "default-src 'none'",
    'img-src data:',
    `style-src '${hashOf(pageStyle)}'`,
    `script-src '${hashOf(pageScript)}'`,
    "base-uri 'none'",
    "form-action 'none'",
  ].join('; ');
  // The end of the head, the style and the script are the page's own, and not escaped.
  const head = markup`<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="${policy}">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>${report.name}: ${report.steps.length} steps</title>`.text;
  const body = markup`<body>
${headerOf(report)}
<nav aria-label="Steps">
<ol>
${report.steps.map(entryOf)}</ol>
</nav>
<main tabindex="0" aria-label="The step">
${report.steps.map((step, at) => sectionOf(step, at, report))}</main>
${storeOf(report)}`.text;
  return (
    `${head}\n<style>${pageStyle}</style>\n</head>\n${body}\n` +
    `<script>${pageScript}</script>\n</body>\n</html>\n`
  );
}

function headerOf({ name, startedAt, steps, damaged }: Report): Html {
  const refused = steps.filter((step) => step.outcome === 'refused').length;
  const unknown = steps.filter((step) => step.outcome === 'unknown').length;
  const title = startedAt === undefined ? name : `Session of ${startedAt.replace(/\.\d+Z$/, 'Z')}`;
  return markup`<header>
<h1>${title}</h1>
<p>${name}: ${steps.length} steps, ${refused} refused${unknown > 0 && `, ${unknown} unknown`}${
    damaged > 0 && `, ${damaged} lines of the recording could not be read`
  }</p>
<p class="keys">Next and previous step <kbd>j</kbd> <kbd>k</kbd>, next and previous refusal
<kbd>n</kbd> <kbd>p</kbd>, first and last <kbd>Home</kbd> <kbd>End</kbd></p>
</header>`;
}

function entryOf(step: Step, at: number): Html {
  return markup`<li><a href="#step-${at + 1}" class="${step.outcome}${step.seen && ' look'}"><span class="title">${bounded(
    step.title,
    200,
  )}</span> ${badgeOf(step)}<span class="time">${clock(step.at)}</span></a></li>
`;
}

function badgeOf({ outcome, refusal }: Step): Html {
  switch (outcome) {
    case 'refused':
      return markup`<strong class="badge">refused: ${refusal?.code}</strong> `;
    case 'unknown':
      return markup`<strong class="badge">unknown</strong> `;
    default:
      return markup``;
  }
}

function sectionOf(step: Step, at: number, report: Report): Html {
  const heading = `step-${at + 1}-title`;
  return markup`<section id="step-${at + 1}" class="${step.outcome}" aria-labelledby="${heading}">
<h2 id="${heading}">${at + 1}. ${bounded(step.title, 300)}</h2>
<p class="when">${badgeOf(step)}at ${clock(step.at)}${
    step.took !== undefined && `, took ${duration(step.took)}`
  }</p>
${step.refusal && markup`<p class="refusal">${bounded(step.refusal.message, maxText)}</p>`}
<div class="facts">
${pictureOf(step, report)}
<dl>
${askedOf(step)}${listOf('Proven', step.proven)}${
    step.sent !== undefined && markup`<dt>Sent</dt><dd>${bounded(step.sent, maxText)}</dd>\n`
  }${changesOf(step)}${listOf('Then', step.remarks)}</dl>
</div>
${step.seen && outlineSection(step.seen)}
</section>
`;
}

function askedOf({ asked }: Step): Html {
  if (asked === undefined) {
    return markup``;
  }
  const members = Object.entries(asked.args).map(
    ([name, value]) =>
      markup` <span class="argument">${bounded(name, 100)}: <code>${bounded(
        JSON.stringify(value),
        maxText,
      )}</code></span>`,
  );
  return markup`<dt>Asked</dt><dd><code>${bounded(asked.method, 200)}</code>${members}</dd>\n`;
}

function listOf(name: string, texts: string[]): Html {
  return texts.length === 0
    ? markup``
    : markup`<dt>${name}</dt><dd><ul>${texts.map((text) => markup`<li>${bounded(text, maxText)}</li>`)}</ul></dd>\n`;
}

function changesOf({ changes, asked, sent }: Step): Html {
  if (changes === undefined) {
    return sent === undefined || sent === 'nothing' || asked === undefined
      ? markup``
      : markup`<dt>Changed</dt><dd>Nobody looked.</dd>\n`;
  }
  const items = changes
    .slice(0, maxChanges)
    .map((each) => markup`<li class="${each.kind}"><b>${each.kind}</b> ${each.text}</li>`);
  const more = changes.length - items.length;
  return markup`<dt>Changed</dt><dd>${items.length === 0 && 'Nothing.'}<ul>${items}${
    more > 0 && markup`<li>and ${more} more</li>`
  }</ul></dd>\n`;
}

function outlineSection(seen: Observation): Html {
  const depths = depthsOf(seen.nodes);
  const lines = seen.nodes.slice(0, maxOutline).map(
    (node, at) => markup`${'  '.repeat(Math.min(depths[at] ?? 0, 20))}${outlineOf(node)}
`,
  );
  const more = seen.nodes.length - lines.length;
  const took = seen.durationMs === undefined ? '' : `, read in ${duration(seen.durationMs)}`;
  return markup`<details><summary>${seen.nodes.length} nodes listed${took}${
    seen.truncated && ', the rest of the tree is missing'
  }</summary>
${listOfOmissions(seen.omissions)}<pre tabindex="0" aria-label="Outline">${lines}${more > 0 && `and ${more} more`}</pre>
</details>`;
}

function listOfOmissions(omissions: string[]): Html {
  return omissions.length === 0
    ? markup``
    : markup`<ul>${omissions.map((text) => markup`<li>${bounded(text, maxText)}</li>`)}</ul>\n`;
}

function pictureOf(step: Step, { pictures }: Report): Html {
  if (step.picture === undefined) {
    return markup``;
  }
  const { picture, takenAt, earlier } = step.picture;
  if (!pictures.has(picture.file)) {
    return markup`<p class="missing">The picture is missing from the recording.</p>`;
  }
  const marked = step.node?.bounds;
  const marks = marked === undefined ? [] : [markOf(marked, picture, 'mark')];
  if (step.seen !== undefined) {
    for (const { bounds } of step.changes?.slice(0, maxChanges) ?? []) {
      marks.push(bounds === undefined ? markup`` : markOf(bounds, picture, 'change'));
    }
  }
  const label = marked === undefined ? 'The window' : 'The window, the node marked';
  return markup`<figure><svg width="${picture.width}" height="${picture.height}" viewBox="0 0 ${picture.width} ${picture.height}" role="img" aria-label="${label}"><use href="#${idOf(picture.file)}"/>${marks}</svg>${
    earlier &&
    markup`<figcaption>Seen at ${clock(takenAt)}; no picture was taken since.</figcaption>`
  }</figure>`;
}

/** A frame around a place on the screen, in the pixels of the picture, within its edges. */
function markOf(place: Rect, { bounds, width, height }: Picture, kind: string): Html {
  const scaleX = width / bounds.width;
  const scaleY = height / bounds.height;
  const left = clamp((place.x - bounds.x) * scaleX, 0, width);
  const top = clamp((place.y - bounds.y) * scaleY, 0, height);
  const right = clamp((place.x + place.width - bounds.x) * scaleX, 0, width);
  const bottom = clamp((place.y + place.height - bounds.y) * scaleY, 0, height);
  const at = [left, top, right - left, bottom - top].map((value) => Math.round(value * 10) / 10);
  const attributes = markup`x="${at[0]}" y="${at[1]}" width="${at[2]}" height="${at[3]}"`;
  return markup`<rect class="${kind} halo" ${attributes}/><rect class="${kind}" ${attributes}/>`;
}

function storeOf({ steps, pictures }: Report): Html {
  const shown = new Map<string, Picture>();
  for (const { picture } of steps) {
    if (picture !== undefined) {
      shown.set(picture.picture.file, picture.picture);
    }
  }
  const images = [...shown].map(([file, { width, height }]) => {
    const data = pictures.get(file);
    return data === undefined
      ? markup``
      : markup`<image id="${idOf(file)}" width="${width}" height="${height}" href="${data}"/>\n`;
  });
  return markup`<svg class="store" aria-hidden="true"><defs>\n${images}</defs></svg>`;
}

function idOf(file: string): string {
  return 'picture-' + file.replace(/[^0-9a-f]/g, '');
}

function clamp(value: number, least: number, most: number): number {
  return Math.min(Math.max(value, least), most);
}

/** "1:02.3", since the recording began. */
function clock(ms: number): string {
  const tenths = Math.round(ms / 100);
  const seconds = ((tenths % 600) / 10).toFixed(1).padStart(4, '0');
  return `${Math.floor(tenths / 600)}:${seconds}`;
}

function duration(ms: number): string {
  return ms < 1000 ? `${Math.round(ms)} ms` : `${(ms / 1000).toFixed(1)} s`;
}

function hashOf(text: string): string {
  return `sha256-${createHash('sha256').update(text).digest('base64')}`;
}
