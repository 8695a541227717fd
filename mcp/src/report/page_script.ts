// What moves in the report page: one step shows at a time, chosen by key, link or address.

export const pageScript = `
'use strict';
const sections = [...document.querySelectorAll('main > section')];
const links = [...document.querySelectorAll('nav a')];
let current = -1;

function show(index, focus) {
  const next = Math.min(Math.max(index, 0), sections.length - 1);
  if (next < 0 || next === current) return;
  current = next;
  sections.forEach((section, at) => { section.hidden = at !== next; });
  links.forEach((link, at) => {
    if (at === next) link.setAttribute('aria-current', 'step');
    else link.removeAttribute('aria-current');
  });
  links[next].scrollIntoView({ block: 'nearest' });
  if (focus) links[next].focus({ preventScroll: true });
  document.querySelector('main').scrollTop = 0;
  history.replaceState(null, '', '#' + sections[next].id);
}

function addressed() {
  return sections.findIndex((section) => '#' + section.id === location.hash);
}

function refusal(direction) {
  for (let at = current + direction; at >= 0 && at < sections.length; at += direction) {
    if (sections[at].matches('.refused, .unknown')) return at;
  }
  return current;
}

document.addEventListener('keydown', (event) => {
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  const reading = event.target.closest && event.target.closest('main');
  if (reading && !/^[jknp]$/.test(event.key)) return;
  const steps = {
    j: () => current + 1, ArrowDown: () => current + 1,
    k: () => current - 1, ArrowUp: () => current - 1,
    n: () => refusal(1), p: () => refusal(-1),
    Home: () => 0, End: () => sections.length - 1,
  };
  if (!Object.hasOwn(steps, event.key)) return;
  event.preventDefault();
  show(steps[event.key](), true);
});

addEventListener('hashchange', () => { show(Math.max(addressed(), 0), false); });
document.documentElement.classList.add('live');
show(Math.max(addressed(), 0), false);
`;
