// Runs at the end of a page, and leaves what is wrong with it in an element of its own.
const problems = [];
const [wantedWidth, wantedScheme] = location.search.slice(1).split(",");
const root = document.scrollingElement;
const isDark = matchMedia("(prefers-color-scheme: dark)").matches;

const expect = (holds, problem) => { if (!holds) problems.push(problem); };
const all = (selector) => [...document.querySelectorAll(selector)];
const named = (element) => `<${element.localName} class="${element.getAttribute("class")}"> ` +
    element.textContent.trim().slice(0, 40);

// Those beyond the right edge that no box of their own lets scroll.
const isInBox = (element) => element.closest(".scroll, .unseen, .drawings, thead") !== null;

const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
const luminance = (colour) => channels(colour).slice(0, 3)
    .map((value) => value / 255)
    .map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4))
    .reduce((sum, value, i) => sum + value * [0.2126, 0.7152, 0.0722][i], 0);
const isSeeThrough = (colour) => (channels(colour)[3] ?? 1) < 1;
const behind = (element) => {
    for (let at = element; at !== null; at = at.parentElement) {
        const colour = getComputedStyle(at).backgroundColor;
        if (!isSeeThrough(colour)) return colour;
    }
    return isDark ? "rgb(0, 0, 0)" : "rgb(255, 255, 255)";
};
const contrast = (element) => {
    const [dark, light] = [getComputedStyle(element).color, behind(element)]
        .map(luminance).sort((one, other) => one - other);
    return (light + 0.05) / (dark + 0.05);
};

expect(innerWidth === Number(wantedWidth), `the window is ${innerWidth} wide`);
expect(isDark === (wantedScheme === "dark"), "the scheme is the other one");
expect(root.scrollWidth <= innerWidth, `it scrolls sideways: ${root.scrollWidth}`);
for (const element of all("main *")) {
    expect(isInBox(element) || element.getBoundingClientRect().right <= innerWidth + 0.5,
           `beyond the edge: ${named(element)}`);
}
for (const entry of performance.getEntriesByType("resource")) {
    expect(false, `a request: ${entry.name}`);
}
expect(all("img, link, iframe, object, embed, audio, video").length === 0, "a request may follow");
expect(all("script").length === 1, "a script that is not this one");

const texts = all("main *").filter((element) =>
    [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim() !== ""));
expect(texts.length > 50, `only ${texts.length} texts`);
for (const element of [...texts, ...all("main .mark")]) {
    expect(contrast(element) >= 4.5, `contrast ${contrast(element).toFixed(2)}: ${named(element)}`);
}

const levels = all("h1, h2, h3, h4, h5, h6").map((element) => Number(element.localName[1]));
expect(levels[0] === 1 && levels.filter((level) => level === 1).length === 1, "not one h1");
levels.forEach((level, i) => expect(i === 0 || level <= levels[i - 1] + 1, "a heading skips a level"));
for (const element of all("table")) {
    expect(element.caption?.textContent.trim(), `no caption: ${named(element)}`);
}
for (const element of all("th")) {
    expect(element.scope, `no scope: ${named(element)}`);
}
for (const element of all(".mark")) {
    expect(element.parentElement.textContent.trim(), "a sign without a word");
}
for (const element of all("a")) {
    expect(document.getElementById(element.hash.slice(1)), `nothing at ${element.hash}`);
}
expect(document.documentElement.lang === "en" && document.title !== "", "no language or title");

const measured = document.createElement("pre");
measured.id = "measured";
measured.textContent = "\n" + problems.map((problem) => `problem: ${problem.replace(/\s+/g, " ")}\n`)
    .join("") + "end of measures\n";
document.body.append(measured);
