// The parts of dygraphs that the page uses.
declare module "dygraphs/src/dygraph.js" {
  export interface Options {
    labels?: string[];
    dateWindow?: [number, number];
    colors?: string[];
    [name: string]: unknown;
  }
  export default class Dygraph {
    static PLUGINS: object[];
    constructor(element: HTMLElement, rows: (number | null)[][], options: Options);
    updateOptions(options: Options): void;
    resize(): void;
    destroy(): void;
  }
}
declare module "dygraphs/src/plugins/axes.js" {
  const plugin: object;
  export default plugin;
}
declare module "dygraphs/src/plugins/grid.js" {
  const plugin: object;
  export default plugin;
}
