// The texts that oracle.mjs asks about: hard pieces, and JSON texts and values made around them. All from one seed.

export function randomFrom(seed) {
  let state = seed >>> 0;
  return (below) => {
    state = (state + 0x6d2b79f5) >>> 0;
    let mixed = Math.imul(state ^ (state >>> 15), state | 1);
    mixed ^= mixed + Math.imul(mixed ^ (mixed >>> 7), mixed | 61);
    return ((mixed ^ (mixed >>> 14)) >>> 0) % below;
  };
}

const between = (random, first, last) => String.fromCodePoint(first + random(last - first + 1));
const oneOf = (random, list) => list[random(list.length)];

const EMOJI = ["😀", "❤️", "👍🏽", "👩‍👩‍👧‍👦", "🏳️‍🌈", "🇰🇷", "🇰", "👩‍", "‍", "🏽", "1️⃣", "🧑🏻‍🚀", "\u{E0067}", "©", "❤"];
const MARKED = ["é", "e\u0301", "q\u0323\u0307", "\u0301", "각", "\u1100\u1161\u11a8", "\u1100\u1161", "\u11a8", "が",
  "か\u3099", "ก\u0e33", "ह\u093f", "\u0903", "\u0600", "क\u094dष", "क\u094d", "\u094d", "ष", "\u20dd", "נ\u05b8", "\u200c", "Å", "ﬁ"];
const ESCAPES = ["%", "%%", "%4", "%zz", "%41", "%20", "%2B", "%2f", "%25", "%00", "%7e", "%ED%95%9C", "%ed%95%9c", "%ED%95", "%F0%9F%98%80",
  "%C0%80", "%ED%A0%80", "%F4%90%80%80", "%FF", "%EF%BB%BF", "%C3%A9", "%80"];
const RESERVED = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~ ";

// Assigned before Unicode 15, whatever the two sides' versions.
const BLOCKS = [[0x10000, 0x1000b], [0x1d165, 0x1d169], [0x1d400, 0x1d454], [0x1f300, 0x1f320], [0x1f600, 0x1f64f], [0x20000, 0x2a6df], [0xe000, 0xf8ff]];

const PIECES = [
  (random) => Array.from({ length: 1 + random(8) }, () => between(random, 0x21, 0x7e)).join(""),
  (random) => oneOf(random, ["plain words", "https://host/a/b?q=1#top", "a@b.kr", "0x1F", "-12.50", "true"]),
  (random) => between(random, 0xac00, 0xd7a3) + between(random, 0xac00, 0xd7a3),
  (random) => between(random, 0x1100, 0x11ff) + (random(2) ? between(random, 0x3131, 0x318e) : between(random, 0x1161, 0x11c2)),
  (random) => between(random, 0x3041, 0x30fe) + between(random, 0x4e00, 0x9fa5),
  (random) => oneOf(random, EMOJI) + (random(2) ? oneOf(random, EMOJI) : ""),
  (random) => oneOf(random, MARKED) + (random(2) ? between(random, 0x300, 0x36f) : oneOf(random, MARKED)),
  (random) => String.fromCharCode(random(2) ? random(32) : oneOf(random, [0x7f, 0x85, 0xa0, 0xad, 0x200e, 0x2028, 0x2029, 0xfeff])),
  (random) => oneOf(random, ["\r\n", "\n", "\r", "\t", "\n\r"]),
  (random) => String.fromCharCode(oneOf(random, [0xd800, 0xd83d, 0xdb80, 0xdc00, 0xde00, 0xdfff])),
  (random) => oneOf(random, ESCAPES) + (random(2) ? oneOf(random, ESCAPES) : ""),
  (random) => oneOf(random, ["a=1", "&b=2", "&a=3", "=", "&", "&&", "k%20=v%21", "x=a+b%2B", "==", "&c", "+", "?"]),
  (random) => RESERVED[random(RESERVED.length)] + RESERVED[random(RESERVED.length)],
  (random) => between(random, ...oneOf(random, BLOCKS)),
];

export function textFrom(random) {
  let text = "";
  for (let left = random(6); left >= 0; --left) text += oneOf(random, PIECES)(random);
  return random(64) ? text : "";
}

const NUMBERS = ["0", "-0", "-0.0", "1", "-1", "1.5", "1e3", "1E-7", "123456789012345678", "9007199254740993", "18446744073709551615",
  "18446744073709551616", "-9223372036854775808", "0.1", "1e21", "1e20", "5e-324", "1e400", "-1e400", "1e-400", "1.7976931348623157e308",
  "2.2250738585072011e-308", "100000000000000000000000", "0.30000000000000004", "01", "1.", ".5", "+1", "1e", "-"];
const JUNK = ["{", "}", "[", "]", ",", ":", '"', "\\", "\\u", "\\ud83d", "nul", "\u0000", " ", "/*x*/", "'", "\ufeff", "\u00a0", "\\x41"];
const KEYS = ["a", "b", "a", "10", "9", "", "__proto__", "$k", "é", "text", "\u{1F600}", "\uffff"];

/// An argument: text, number, true, false, null, a list or a Map.
export function valueFrom(random, text, depth = 0) {
  switch (random(depth < 3 ? 9 : 6)) {
    case 0: return text;
    case 1: return oneOf(random, [0, -0, 1, -5, 0.1, 1.5, 1e21, 1e-7, 123456789012, 1e20, 5e-324, 0.000001, 2 ** 53, 1 / 3]);
    case 2: return random(2) === 0;
    case 3: return null;
    case 4: return (random(2 ** 31) - 2 ** 30) / 10 ** random(12);
    case 5: return oneOf(random, KEYS);
    case 6: return Array.from({ length: random(4) }, () => valueFrom(random, text, depth + 1));
    default: {
      const entries = Array.from({ length: random(4) }, () => [random(4) ? oneOf(random, KEYS) : text, valueFrom(random, text, depth + 1)]);
      return new Map(entries);
    }
  }
}

const space = (random) => (random(3) ? "" : oneOf(random, [" ", "\n", "\t", "\r\n", "  "]));

function jsonOf(random, value) {
  const gap = () => space(random);
  if (value instanceof Map) {
    const members = [...value].map(([key, member]) => `${gap()}${stringOf(random, key)}${gap()}:${jsonOf(random, member)}`);
    if (members.length && !random(8)) members.push(oneOf(random, members));
    return `${gap()}{${members.join(",")}${gap()}}${gap()}`;
  }
  if (Array.isArray(value)) return `${gap()}[${value.map((element) => jsonOf(random, element)).join(",")}${gap()}]${gap()}`;
  if (typeof value === "number" && random(2)) return oneOf(random, NUMBERS);
  return gap() + (typeof value === "string" ? stringOf(random, value) : JSON.stringify(value)) + gap();
}

/// JSON.stringify escapes unpaired surrogates; half of the texts hold them as they are, some hold escapes that nobody needs.
function stringOf(random, text) {
  const written = JSON.stringify(text);
  if (random(4) === 0) return written.replace(/[a-z/]/u, (unit) => (unit === "/" ? "\\/" : `\\u00${unit.charCodeAt(0).toString(16)}`));
  return random(2) ? written : written.replace(/\\u(d[89a-f]..)/g, (_, digits) => String.fromCharCode(parseInt(digits, 16)));
}

/// JSON texts, a third of them with something put in, taken out or cut off.
export function jsonTextFrom(random, text) {
  const root = random(16) ? (random(2) ? [valueFrom(random, text), text] : new Map([[text, valueFrom(random, text)], ["a", 1]])) : valueFrom(random, text);
  const json = jsonOf(random, root);
  const at = random(json.length + 1);
  switch (random(9)) {
    case 0: return json.slice(0, at) + oneOf(random, JUNK) + json.slice(at);
    case 1: return json.slice(0, at) + json.slice(at + 1);
    case 2: return random(2) ? json.slice(0, at) : "\ufeff" + json;
    default: return json;
  }
}
