// A recording of the server, with what the page has loaded of it.

import { getColumnNames, getColumns, getVerified } from "./api";
import type { Column, Info, Listed, Verified } from "./api";
import { Times } from "./times";

export class Recording {
  readonly name: string;
  readonly info: Info | undefined;
  /** Why it cannot be shown; undefined if it can. */
  readonly problem: string | undefined;
  /** null until `loadTimes` is done. */
  times: Times | null = null;
  verified: Verified | null = null;
  private timesLoading: Promise<Times> | null = null;
  private names: string[] | null = null;
  private readonly columns = new Map<string, Promise<Column>>();

  constructor(
    readonly number: number,
    listed: Listed,
  ) {
    this.name = listed.name;
    this.info = listed.info;
    this.problem = listed.info ? undefined : (listed.problem ?? "it cannot be shown");
  }

  get frames(): number {
    return this.times?.count ?? this.info?.frames_count ?? 0;
  }

  loadTimes(): Promise<Times> {
    this.timesLoading ??= this.readTimes().finally(() => (this.timesLoading = null));
    return this.timesLoading;
  }

  private async readTimes(): Promise<Times> {
    if (!this.times) {
      const [column] = await this.columnsOf(["sensor_time_us"]);
      this.times = new Times(column.map((time) => time ?? 0));
    }
    return this.times;
  }

  /** The names of the columns that have values. */
  async columnNames(): Promise<string[]> {
    this.names ??= await getColumnNames(this.number);
    return this.names;
  }

  /** The columns of these names, in one request, those that are loaded already from memory. */
  columnsOf(names: readonly string[]): Promise<Column[]> {
    const missing = names.filter((name) => !this.columns.has(name));
    if (missing.length) {
      const answer = getColumns(this.number, missing);
      answer.catch(() => missing.forEach((name) => this.columns.delete(name)));
      for (const name of missing) {
        this.columns.set(
          name,
          answer.then((columns) => columns[name] ?? []),
        );
      }
    }
    return Promise.all(names.map((name) => this.columns.get(name)!));
  }

  async verify(): Promise<Verified> {
    this.verified ??= await getVerified(this.number);
    return this.verified;
  }
}
