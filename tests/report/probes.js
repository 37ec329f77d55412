// What the tests ask a page.

function luminance(colour) {
  const [red, green, blue] = (colour.startsWith("#") ? colour.match(/[0-9a-f]{2}/gi).map((part) => parseInt(part, 16)) : colour.match(/[\d.]+/g))
    .map((part) => part / 255).map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4));
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

/** The contrast of two colours as WCAG 2 computes it. */
function contrast(one, other) {
  const [dark, bright] = [luminance(one), luminance(other)].sort((first, second) => first - second);
  return (bright + 0.05) / (dark + 0.05);
}

/** What can be behind an element: a drawing has surfaces of each kind. */
function backgrounds(element) {
  if (element instanceof SVGElement)
    return ["--paper", "--panel", "--card"].map((name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim());
  for (let at = element; at; at = at.parentElement) {
    const colour = getComputedStyle(at).backgroundColor;
    if (colour !== "rgba(0, 0, 0, 0)") return [colour];
  }
  return ["rgb(255, 255, 255)"];
}

/** Texts that are seen and do not stand out from what is behind them. */
function faintTexts() {
  const isSeen = (element) => [...element.childNodes].some((node) => node.nodeType === Node.TEXT_NODE && node.data.trim() !== "") &&
    element.checkVisibility() && !/^(script|noscript|title|desc|option)$/i.test(element.tagName);
  return [...document.querySelectorAll("body *")].filter(isSeen).flatMap((element) => {
    const style = getComputedStyle(element);
    const ratio = Math.min(...backgrounds(element).map((behind) => contrast(element instanceof SVGElement ? style.fill : style.color, behind)));
    return ratio < 4.5 ? [`${element.tagName} "${element.textContent.slice(0, 30)}": ${ratio.toFixed(2)}`] : [];
  });
}

/** What is missing for somebody who does not see the page. */
function missingForReaders() {
  const all = (selector) => [...document.querySelectorAll(selector)];
  const levels = all("h1, h2, h3, h4").map((heading) => Number(heading.tagName[1]));
  const ids = all("[id]").map((element) => element.id);
  const nameOf = (svg) => svg.getAttribute("aria-label") ?? document.getElementById(svg.getAttribute("aria-labelledby"))?.textContent;
  return [
    ...levels.filter((level, place) => level > (levels[place - 1] ?? 0) + 1).map((level) => `a heading ${level} that skips a level`),
    ...all("table").filter((table) => !table.caption?.textContent).map(() => "a table without a caption"),
    ...all("tr").filter((row) => row.cells.length !== row.closest("table").rows[0].cells.length).map(() => "a row that is too long or too short"),
    ...all("th:not([scope])").map((cell) => `a heading cell without a scope: ${cell.textContent}`),
    ...all("svg:not([aria-hidden=true])").filter((svg) => svg.getAttribute("role") !== "img" || !nameOf(svg)).map(() => "a drawing without a name"),
    ...all("input, select").filter((field) => field.labels.length === 0).map(() => "a field without a label"),
    ...ids.filter((id, place) => ids.indexOf(id) !== place).map((id) => `two elements with the id ${id}`),
  ];
}

/** The names in the rows of the first table that are not filtered out. */
function machinesSeen() {
  return [...document.querySelector("table").tBodies[0].rows].filter((row) => row.checkVisibility()).map((row) => row.cells[0].textContent);
}

function searchFor(query) {
  const search = document.getElementById("search");
  search.value = query;
  search.dispatchEvent(new Event("input"));
}

function textsOf(selector) {
  return [...document.querySelectorAll(selector)].map((element) => element.textContent).join("\n");
}
