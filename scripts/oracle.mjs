// usage: node scripts/oracle.mjs COMMAND [COUNT [SEED [PLANT]]]
//        node scripts/oracle.mjs --checks        the operations that are checked
// Sends COUNT generated texts through `COMMAND call --batch` and through what Node has of its own: Intl.Segmenter, JSON,
// URLSearchParams and the percent coding of ECMAScript. Where our rules differ from those, a named rule turns Node's answer
// into ours and is counted; an answer that no rule explains is a failure. PLANT names a check, one of whose answers is
// then falsified: the run must fail.
import { spawnSync } from "node:child_process";
import { jsonTextFrom, randomFrom, textFrom, valueFrom } from "./oracle_texts.mjs";

const [command, count = "200000", seed = "1", plant = ""] = process.argv.slice(2);
const CHUNK = 5000;
const nil = undefined;

const isWellFormed = (text) => !/\p{Surrogate}/u.test(text);
const orNil = (work) => { try { return work(); } catch { return nil; } };

// How arguments and results are written for the command.

function wire(value) {
  if (value === null) return '{"$null":true}';
  if (typeof value === "string") return isWellFormed(value) ? JSON.stringify(value) : `{"$utf16":[${Array.from({ length: value.length }, (_, i) => value.charCodeAt(i))}]}`;
  if (Array.isArray(value)) return `[${value.map(wire)}]`;
  if (value instanceof Map) return `{"$entries":[${[...value].map(([key, member]) => `[${wire(key)},${wire(member)}]`)}]}`;
  return Object.is(value, -0) ? "-0.0" : JSON.stringify(value);
}

function fromWire(json) {
  if (json === null || typeof json !== "object") return json;
  if (Array.isArray(json)) return json.map((element) => (element === null ? nil : fromWire(element)));
  if (json.$null) return null;
  if (json.$utf16) return String.fromCharCode(...json.$utf16);
  return new Map(json.$entries ? json.$entries.map(([key, member]) => [fromWire(key), fromWire(member)])
                               : Object.entries(json).map(([key, member]) => [key, fromWire(member)]));
}
const answerOf = (line) => {
  const answer = JSON.parse(line);
  if ("error" in answer) return { error: answer.error };
  return answer.result === null ? nil : fromWire(answer.result);
};

/// One text for equal values: dictionaries by their keys, -0 and 0 apart.
function plainText(value) {
  if (value === nil) return "nil";
  if (Array.isArray(value)) return `[${value.map(plainText)}]`;
  if (value instanceof Map) return `{${[...value].map(([key, member]) => `${JSON.stringify(key)}:${plainText(member)}`).sort()}}`;
  return Object.is(value, -0) ? "-0" : JSON.stringify(value);
}

const isPlain = (value) => typeof value === "string" || value === nil;
const isSame = (a, b) => (isPlain(a) || isPlain(b) ? a === b : plainText(a) === plainText(b));

// Node's answers. `by(rule, answer)` counts the rule where its answer is another one than before.

const counts = new Map();
class Answer {
  constructor(value) { this.value = value; }
  by(rule, change) {
    const changed = change(this.value);
    if (changed !== this.value && !isSame(changed, this.value)) counts.set(rule, (counts.get(rule) ?? 0) + 1);
    this.value = changed;
    return this;
  }
}

const segmenter = new Intl.Segmenter("en", { granularity: "grapheme" });
const EXTENDING = String.raw`(?!\u200c)[\p{Mn}\p{Me}\u200d\u{1f3fb}-\u{1f3ff}\u{e0020}-\u{e007f}]`;
const CONJUNCT = new RegExp(`[\\u0915-\\u0939](?=(?:${EXTENDING})*\\u094d)(?=(?:${EXTENDING})*[\\p{Me}\\u034f\\ufe0f\\u{1f3fb}-\\u{1f3ff}\\u{e0020}-\\u{e007f}])(?:${EXTENDING})*(?=[\\u0915-\\u0939])`, "gu");
const clusters = (text) => new Answer([...segmenter.segment(text)].length)
  .by("clusters: a mark of class 0 inside an Indic conjunct parts it before Unicode 16",
      (number) => (parseFloat(process.versions.unicode) < 16 ? number : number + (text.match(CONJUNCT) ?? []).length));

const escaped = (units) => (text) => text?.replace(units, (unit) => `%${unit.charCodeAt(0).toString(16).toUpperCase()}`);
const kept = (escapes) => (text) => text?.replace(escapes, (escape) => decodeURIComponent(escape));

const strict = (text) => new Answer(orNil(() => encodeURIComponent(text)))
  .by("urlEncodeString: ! * ' ( ) are escaped", escaped(/[!*'()]/g))
  .by("urlEncodeString: = stays", kept(/%3D/g));
const forURL = (text) => new Answer(orNil(() => encodeURI(text)))
  .by("stringByURLEncoding: # is escaped", escaped(/#/g))
  .by("stringByURLEncoding: [ ] stay", kept(/%5B|%5D/g));
const forced = (text) => new Answer(orNil(() => encodeURIComponent(text)))
  .by("stringByEncodingCharacterSet: ! * ' ( ) are escaped", escaped(/[!*'()]/g))
  .by("stringByEncodingCharacterSet: ` and controls stay", kept(/%60|%[01][0-9A-F]|%7F/g))
  .by("stringByEncodingCharacterSet: other scripts stay", kept(/(?:%[89A-F][0-9A-F])+/g))
  .by("stringByEncodingCharacterSet: what cannot be encoded is answered as it is", (answer) => answer ?? text);
const forQuery = (text) => new Answer(orNil(() => encodeURIComponent(text)))
  .by("qv_percentEscapedQueryString...: ! * ' ( ) are escaped", escaped(/[!*'()]/g))
  .by("qv_percentEscapedQueryString...: other scripts stay", kept(/(?:%[89A-F][0-9A-F])+/g))
  .by("qv_percentEscapedQueryString...: all but 16 characters stay", kept(/%(?:2[025]|3C|3E|5B|5C|5D|5E|60|7B|7C|7D|[01][0-9A-F]|7F)/g))
const withMarks = (encode, what) => (text) => new Answer(orNil(() => encodeURIComponent(text)))
  .by(`urlEncodedString(_:): combining marks stay, ${what}`,
      (answer) => (answer === nil ? nil : text.replace(/\P{M}+/gu, encode)))
  .by("urlEncodedString(_:): what cannot be encoded is empty", (answer) => answer ?? "");
const everything = (run) => Buffer.from(run).toString("hex").toUpperCase().replace(/../g, "%$&");
const allButURL = (run) => kept(/%5B|%5D/g)(escaped(/#/g)(encodeURI(run)));

const decodeValue = (text) => (isWellFormed(text) ? orNil(() => decodeURIComponent(text)) : nil);
const decoded = (text) => new Answer(orNil(() => decodeURIComponent(text)))
  .by("decoding: an unpaired surrogate makes it nil", (answer) => (isWellFormed(text) ? answer : nil));
const decodedOrSame = (text) => decoded(text).by("decoding: what cannot be decoded is answered as it is", (answer) => answer ?? text);

// Query texts, a piece at a time: the constructor of URLSearchParams takes the whole as bytes, drops a leading "?" and
// mends what is malformed.
const isDecodable = (part) => decodeValue(part) !== nil;
const lenient = (part) => [...new URLSearchParams(`&x=${part}`)][0][1];
const lenientKeepingPlus = (part) => lenient(part.replaceAll("+", "%2B"));
function pairs(text, name) {
  const all = (pieces) => new Map(pieces.flatMap((piece) => [...new URLSearchParams(`&${piece}`)]));
  const pieces = text.split("&");
  const whole = pieces.map((piece) => piece.split("=")).filter((parts) => parts.length === 2);
  const answer = new Answer(all(pieces)).by(`${name}: a piece without exactly one = is passed over`, () => all(whole.map((parts) => parts.join("="))));
  return { answer, read: (key, value) => new Map(whole.map((parts) => [key(parts[0]), value(parts[1])])) };
}
function parsed(text) {
  const { answer, read } = pairs(text, "parseQuery");
  const exact = (part) => (isDecodable(part) ? lenientKeepingPlus(part) : part);
  return answer.by("parseQuery: + is no space", () => read(lenientKeepingPlus, lenientKeepingPlus))
    .by("parseQuery: a malformed part stays as it is", () => read(exact, exact));
}
function parameters(text) {
  const { answer, read } = pairs(text, "parameterInfo");
  const same = (part) => part;
  return answer.by("parameterInfo: keys are not decoded", () => read(same, lenient))
    .by("parameterInfo: a malformed value stays as it is, + as a space", () => read(same, (part) => (isDecodable(part) ? lenient(part) : part.replaceAll("+", " "))));
}
const queryText = (key, value) => new Answer(`?${new URLSearchParams([[key, value]])}`)
  .by("queryString: a space is %20", (text) => text.replaceAll("+", "%20"))
  .by("queryString: ~ stays, * is escaped, = stays", (text) => text.replace(/%7E/g, "~").replaceAll("*", "%2A").replace(/%3D/g, "="))
  .by("queryString: what cannot be encoded is (null)", (text) => {
    const parts = [key, value].map((part) => strict(part).value ?? "(null)");
    return isWellFormed(key) && isWellFormed(value) ? text : `?${parts.join("=")}`;
  });

// JSON.

const TOKEN = /"(?:[^"\\]|\\.)*"(\s*:)?|-?\d[\d.eE+-]*/gs;
const tokens = (text) => [...text.matchAll(TOKEN)].map((match) => match[0]);
const isOutOfRange = (token) => token[0] !== '"' && (!Number.isFinite(+token) || (+token === 0 && /[1-9]/.test(token.split(/[eE]/)[0])));
const hasHalves = (token) => token[0] === '"' && !isWellFormed(JSON.parse(token.replace(/\s*:$/, "")));

const isNegativeZero = (token) => token === "-0";
const withoutNegativeZeros = (text) => text.replace(TOKEN, (token) => (isNegativeZero(token) ? "0" : token));

function toMaps(value, nameOf = (key) => key) {
  if (Array.isArray(value)) return value.map((element) => toMaps(element, nameOf));
  if (value === null || typeof value !== "object") return value;
  const map = new Map();
  for (const key of Object.keys(value)) if (!map.has(nameOf(key))) map.set(nameOf(key), toMaps(value[key], nameOf));
  return map;
}
/// Every key is made one of its own, so that none replaces an earlier one.
function keepingFirst(text) {
  let number = 0;
  const apart = text.replace(TOKEN, (token, colon) => (colon ? `${token.replace(/"\s*:$/, "")}\\u0000${++number}":` : token));
  return toMaps(JSON.parse(apart), (key) => key.slice(0, key.lastIndexOf("\u0000")));
}

const read = (text) => {
  const bare = text.replace(/^\ufeff/, "");
  return new Answer(orNil(() => toMaps(JSON.parse(text))))
    .by("JSON: one leading U+FEFF is skipped", (value) => (bare === text ? value : orNil(() => toMaps(JSON.parse(bare)))))
    .by("JSON: of repeated keys the first stays", (value) => (value === nil ? nil : keepingFirst(bare)))
    .by("JSON: -0 without a fraction is the integer 0", (value) => (value !== nil && tokens(bare).some(isNegativeZero) ? keepingFirst(withoutNegativeZeros(bare)) : value))
    .by("JSON: a number that overflows, or underflows to zero, makes the text invalid", (value) => (value !== nil && tokens(bare).some(isOutOfRange) ? nil : value))
    .by("JSON: an unpaired surrogate makes the text invalid", (value) => (value !== nil && (!isWellFormed(bare) || tokens(bare).some(hasHalves)) ? nil : value))
    .by("JSON: the top level is a list or a dictionary", (value) => (value === nil || typeof value === "object" && value !== null ? value : nil));
};
const readRecord = (text) => read(text).by("jsonObject: the top level is a dictionary", (value) => (value instanceof Map ? value : nil));

function stringified(value) {
  if (Array.isArray(value)) return `[${value.map(stringified)}]`;
  if (value instanceof Map) return `{${[...value].sort(([a], [b]) => (a < b ? -1 : 1)).map(([key, member]) => `${JSON.stringify(key)}:${stringified(member)}`)}}`;
  return JSON.stringify(value);
}
const holds = (value, test) => test(value) || (Array.isArray(value) && value.some((element) => holds(element, test))) ||
  (value instanceof Map && [...value].flat().some((part) => holds(part, test)));
const hasHalf = (part) => typeof part === "string" && !isWellFormed(part);
const written = (value) => new Answer(stringified(value))
  .by("JSON: / is escaped", (text) => text.replaceAll("/", "\\/"))
  .by("JSON: -0 keeps its sign", (text) => (holds(value, (part) => Object.is(part, -0)) ? stringified(mapped(value, (part) => (Object.is(part, -0) ? "\u0000-0" : part)))
    .replaceAll('"\\u0000-0"', "-0").replaceAll("/", "\\/") : text))
  .by("JSON: an unpaired surrogate cannot be written", (text) => (holds(value, hasHalf) ? nil : text));
const mapped = (value, change) => (Array.isArray(value) ? value.map((element) => mapped(element, change))
  : value instanceof Map ? new Map([...value].map(([key, member]) => [key, mapped(member, change)])) : change(value));
const forScript = (text) => new Answer(JSON.stringify(text).slice(1, -1))
  .by("qv_stringEscapedForJavasacript: / is escaped", (answer) => answer.replaceAll("/", "\\/"))
  .by("qv_stringEscapedForJavasacript: an unpaired surrogate stays", (answer) => (isWellFormed(text) ? answer : text));

// The checks: an operation, what it is given of a round, Node's answer, and what is compared of ours.

const CODING = "NSString(URLEncoding)", ADDITIONS = "NSString(Additions)", VALUE = "String extension";
const ofText = (family, operation, expected, rest = []) => ({ family, operation, given: ({ text }) => [text, ...rest], expected: ([text]) => expected(text) });
const ofJSON = (family, operation, expected) => ({ family, operation, given: ({ json }) => [json], expected: ([json]) => expected(json) });
const CHECKS = [
  ofText(VALUE, "count()", clusters),
  ofText(CODING, "urlEncodeString", strict),
  ofText(CODING, "stringByURLEncoding", forURL),
  ofText(CODING, "stringByEncodingCharacterSet", forced),
  ofText(ADDITIONS, "qv_percentEscapedQueryStringValueFromStringWithEncoding:encoding:", forQuery, [4]),
  ofText(VALUE, "urlEncodedString(_:)", withMarks(everything, "all else is escaped"), [false]),
  ofText(VALUE, "urlEncodedString(_:)", withMarks(allButURL, "and what a URL may hold"), [true]),
  ofText(CODING, "urlDecodeString", decoded),
  ofText(CODING, "stringByDecodingPercentChars", decodedOrSame),
  ofText(VALUE, "urlDecoded", decodedOrSame),
  ofText("NSString(Query)", "parseQuery", parsed),
  ofText(CODING, "parameterInfo", parameters),
  { family: "NSDictionary(URL)", operation: "queryString", given: ({ text, other }) => [new Map([[text, other]])], expected: ([record]) => queryText(...[...record][0]) },
  ofJSON("NSString(ConvertJSON)", "objectFromJSONString", read),
  ofJSON(VALUE, "jsonObject", readRecord),
  ofText(ADDITIONS, "qv_stringEscapedForJavasacript", forScript),
  { family: "NSArray(ConvertJSON)", operation: "toJSONString", given: ({ list }) => [list], expected: ([list]) => written(list) },
  { family: "NSDictionary(ConvertJSON)", operation: "toJSONString", given: ({ record }) => [record], expected: ([record]) => written(record) },
  { family: "NSArray(ConvertJSON)", operation: "toJSONString:", given: ({ list }) => [list, 1], compared: (answer) => (answer === nil ? nil : toMaps(JSON.parse(answer))),
    expected: ([list]) => new Answer(list).by("JSON: an unpaired surrogate cannot be written", (value) => (holds(value, hasHalf) ? nil : value)) },
];
for (const check of CHECKS) check.head = `{"family":${JSON.stringify(check.family)},"operation":${JSON.stringify(check.operation)},"args":[`;
if (command === "--checks") {
  for (const operation of new Set(CHECKS.map((check) => check.operation))) console.log(operation);
  process.exit();
}
if (plant && !CHECKS.some(({ operation }) => operation === plant)) throw new Error(`no check of ${plant}`);

const random = randomFrom(+seed);
const roundFrom = () => {
  const text = textFrom(random), other = textFrom(random);
  return { text, other, json: jsonTextFrom(random, text), list: [valueFrom(random, text), text], record: new Map([[text, valueFrom(random, text)], ["b", 1], ["a", 2]]) };
};

function answersTo(calls) {
  let input = "";
  for (const { check, given } of calls) input += `${check.head}${given.map(wire)}]}\n`;
  const run = spawnSync(command, ["call", "--batch"], { input, maxBuffer: 2 ** 30 });
  const answers = run.stdout?.toString().split("\n").slice(0, -1) ?? [];
  if (answers.length !== calls.length) throw new Error(`${command}: ${answers.length} answers to ${calls.length} calls ${run.stderr ?? run.error}`);
  return answers;
}

let differences = 0, planted = plant === "";
function compare({ check, given }, line) {
  const answer = answerOf(line);
  const ours = check.compared ? check.compared(answer) : answer;
  const theirs = check.expected(given).value;
  const isFalsified = !planted && check.operation === plant;
  planted ||= isFalsified;
  if (isSame(ours, theirs) !== isFalsified) return;
  if (++differences <= 20) console.error(`oracle: ${check.operation} of ${given.map(wire)}: ours ${plainText(ours)}, expected ${plainText(theirs)}${isFalsified ? ", falsified" : ""}`);
}

const started = Date.now();
for (let done = 0; done < +count; done += CHUNK) {
  const rounds = Array.from({ length: Math.min(CHUNK, +count - done) }, roundFrom);
  const calls = rounds.flatMap((round) => CHECKS.map((check) => ({ check, given: check.given(round) })));
  const answers = answersTo(calls);
  calls.forEach((call, i) => compare(call, answers[i]));
}
if (!plant) for (const [rule, number] of [...counts].sort()) console.log(`oracle: ${String(number).padStart(7)}  ${rule}`);
console.log(`oracle: ${count} texts, ${count * CHECKS.length} calls, ${differences} unexplained differences (Unicode ${process.versions.unicode} there, ${((Date.now() - started) / 1000).toFixed(1)} s)`);
process.exit(differences || +count === 0 ? 1 : 0);
