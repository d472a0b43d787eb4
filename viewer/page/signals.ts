// The columns that can be curves: how they are called, and their units.

import type { Column } from "./api";
import type { Times } from "./times";

export interface Signal {
  /** The name of the column, as the tool has it. */
  name: string;
  label: string;
  /** Empty if it is not known, as of CAN signals. */
  unit: string;
}

const known: Record<string, { label: string; unit: string }> = {
  speed_m_s: { label: "Speed", unit: "m/s" },
  direction: { label: "Heading", unit: "°" },
  alt_m: { label: "Altitude", unit: "m" },
  acceleration_m_s2: { label: "Acceleration", unit: "m/s²" },
};

const firstChoice = ["speed_m_s", "direction", "alt_m"];
const chosenAtFirst = 3;

export function signalOf(name: string): Signal {
  return { name, ...(known[name] ?? { label: name, unit: "" }) };
}

/** The curves to begin with. */
export function usualChoice(names: readonly string[]): string[] {
  const usual = firstChoice.filter((name) => names.includes(name));
  return usual.length ? usual : names.slice(0, chosenAtFirst);
}

/** The values over the axis. No line crosses a gap, or the plot where a heading passes north. */
export function rowsOf(name: string, times: Times, values: Column): [number, number | null][] {
  const isHeading = name === "direction";
  const behindGaps = new Set(times.gaps.map(({ frame }) => frame));
  const rows: [number, number | null][] = [];
  times.seconds.forEach((second, i) => {
    const value = values[i] ?? null;
    const passesNorth = isHeading && i > 0 && Math.abs((value ?? 0) - (values[i - 1] ?? 0)) > 180;
    if (passesNorth || behindGaps.has(i)) rows.push([second, null]);
    rows.push([second, value]);
  });
  return rows;
}
