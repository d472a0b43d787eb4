// The visible part of the axis, which timeline and curves share: zooming, panning, following.

export interface Range {
  readonly from: number;
  readonly to: number;
}

const narrowest = 0.05;

/** The range within 0 to end; null if it is all of that. */
export function fitted(range: Range, end: number): Range | null {
  const width = Math.max(narrowest, range.to - range.from);
  if (!(width < end * 0.999)) return null;
  const from = Math.min(Math.max(0, range.from), end - width);
  return { from, to: from + width };
}

/** Larger by the factor around a place, which stays where it is. */
export function zoomed(range: Range, factor: number, around: number, end: number): Range | null {
  const width = Math.max(narrowest, (range.to - range.from) * factor);
  const share = (around - range.from) / (range.to - range.from || 1);
  const from = around - share * width;
  return fitted({ from, to: from + width }, end);
}

/** Turned by pages, so that the place is in it with most of the range before it. */
export function following(
  range: Range,
  place: number,
  backwards: boolean,
  end: number,
): Range | null {
  if (place >= range.from && place <= range.to) return range;
  const width = range.to - range.from;
  const from = place - width * (backwards ? 0.9 : 0.1);
  return fitted({ from, to: from + width }, end);
}

const day = 86400;
const roundSteps = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200];

/** Round distances for marks on the axis: about one for each `wanted` of the width. */
export function tickStep(width: number, wanted: number): number {
  const rough = width / Math.max(1, wanted);
  if (rough > day) return Math.ceil(rough / day) * day;
  if (rough > 1) return roundSteps.find((step) => step >= rough) ?? day;
  const power = 10 ** Math.floor(Math.log10(rough));
  return [1, 2, 5, 10].map((factor) => factor * power).find((step) => step >= rough) ?? 1;
}

/** Decimals that tell ticks of this distance apart. */
export function tickDigits(step: number): number {
  return step >= 1 ? 0 : Math.min(3, Math.ceil(-Math.log10(step) - 1e-9));
}
