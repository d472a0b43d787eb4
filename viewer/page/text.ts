// Numbers and times as text.

/** The first microsecond of the year 10000. */
const endOfFormat = 253402300800000000;

/** Microseconds since 1970 in RFC 3339, UTC, with six digits, as the tool shows them. */
export function utc(us: number): string {
  if (!(us >= 0 && us < endOfFormat)) return `${us} us`;
  const second = Math.floor(us / 1e6);
  const rest = String(us - second * 1e6).padStart(6, "0");
  return `${new Date(second * 1000).toISOString().slice(0, 19)}.${rest}Z`;
}

/** Seconds since frame 0: +0.166 s, +2:03.500, +1:02:03.500. */
export function sinceStart(seconds: number, digits = 3): string {
  const unit = 10 ** digits;
  const whole = Math.round(Math.abs(seconds) * unit);
  const sign = seconds < 0 && whole > 0 ? "-" : "+";
  const minutes = Math.floor(whole / (60 * unit));
  const rest = (whole - minutes * 60 * unit) / unit;
  if (minutes === 0) return `${sign}${rest.toFixed(digits)} s`;
  const two = (value: number) => String(value).padStart(2, "0");
  const tail = rest.toFixed(digits).padStart(digits ? digits + 3 : 2, "0");
  const hours = Math.floor(minutes / 60);
  return hours ? `${sign}${hours}:${two(minutes % 60)}:${tail}` : `${sign}${minutes}:${tail}`;
}

/** A length of time in words: 0.2 s, 12.5 s, 3 min 20 s, 2 h 5 min. */
export function howLong(seconds: number): string {
  if (seconds < 59.95) return `${decimal(seconds, seconds < 1 ? 3 : 1)} s`;
  const whole = Math.round(seconds);
  const parts: [number, string][] = [
    [Math.floor(whole / 86400), "d"],
    [Math.floor(whole / 3600) % 24, "h"],
    [Math.floor(whole / 60) % 60, "min"],
    [whole % 60, "s"],
  ];
  const first = parts.findIndex(([count]) => count > 0);
  return parts
    .slice(first, first + 2)
    .filter(([count]) => count > 0)
    .map(([count, unit]) => `${count} ${unit}`)
    .join(" ");
}

/** At most so many decimals, without zeros at the end. */
export function decimal(value: number, digits: number): string {
  return String(Number(value.toFixed(digits)));
}

/** A measured value: whole numbers in full, others with six significant digits. */
export function measured(value: number): string {
  return Number.isInteger(value) ? String(value) : String(Number(value.toPrecision(6)));
}

export function bytes(count: number): string {
  const units = ["KiB", "MiB", "GiB", "TiB"];
  const power = Math.min(units.length, Math.floor(Math.log2(Math.max(1, count)) / 10));
  if (power === 0) return `${count} bytes`;
  return `${count} bytes (${(count / 1024 ** power).toFixed(1)} ${units[power - 1]})`;
}

export function plural(count: number, one: string): string {
  return `${count} ${one}${count === 1 ? "" : "s"}`;
}

/** The word as one argument of a command in a shell. What a terminal takes for a key is escaped. */
export function shellQuoted(word: string): string {
  if (/[\x00-\x1f\x7f-\x9f]/.test(word)) return `$'${word.replace(/[\x00-\x1f\\'\x7f-\x9f]/g, escaped)}'`;
  return /^[\w@%+=:,./-]+$/.test(word) ? word : `'${word.replace(/'/g, "'\\''")}'`;
}

function escaped(character: string): string {
  const code = character.charCodeAt(0);
  return code > 0x7f ? `\\u${code.toString(16).padStart(4, "0")}` : `\\x${code.toString(16).padStart(2, "0")}`;
}

/** The path as an argument that no command takes for an option. */
export function shellPath(path: string): string {
  return shellQuoted(path.startsWith("-") ? `./${path}` : path);
}
