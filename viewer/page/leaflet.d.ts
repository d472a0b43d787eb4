// The parts of Leaflet that the page uses.
declare module "leaflet/leaflet.esm.js" {
  export type Place = [number, number]; // latitude, longitude, degrees

  export interface Point {
    x: number;
    y: number;
  }
  export interface LatLng {
    lat: number;
    lng: number;
  }
  export interface Bounds {
    pad(ratio: number): Bounds;
    contains(place: Place): boolean;
  }
  export interface MouseEvent {
    containerPoint: Point;
  }

  export interface Layer {
    addTo(map: Map): this;
    remove(): this;
  }
  export interface Polyline extends Layer {
    getBounds(): Bounds;
    setStyle(style: { color: string }): this;
  }
  export interface Marker extends Layer {
    setLatLng(place: Place): this;
  }
  export interface Control {
    addTo(map: Map): this;
  }
  export interface Map {
    fitBounds(bounds: Bounds, options?: { maxZoom?: number; animate?: boolean }): this;
    getBounds(): Bounds;
    panTo(place: Place, options?: { animate?: boolean }): this;
    invalidateSize(options?: { animate?: boolean }): this;
    latLngToContainerPoint(place: Place): Point;
    on(name: "click", handler: (event: MouseEvent) => void): this;
    readonly attributionControl: {
      setPrefix(html: string): void;
      addAttribution(html: string): void;
    };
  }

  export interface Renderer {
    readonly leafletRenderer: true;
  }

  export function map(
    element: HTMLElement,
    options: {
      keyboard: boolean;
      attributionControl: boolean;
      fadeAnimation: boolean;
      zoomAnimation: boolean;
      zoomSnap: number;
      maxZoom: number;
    },
  ): Map;
  export function canvas(options: { padding: number; tolerance?: number }): Renderer;
  export function polyline(
    places: Place[][],
    options: { color: string; weight: number; interactive: boolean; renderer: Renderer },
  ): Polyline;
  export function marker(
    place: Place,
    options: { icon: object; interactive: boolean; keyboard: boolean },
  ): Marker;
  export function divIcon(options: {
    html: HTMLElement;
    className: string;
    iconSize: [number, number];
  }): object;
  export function tileLayer(url: string, options: { maxZoom: number }): Layer;
  export const control: {
    scale(options: { imperial: boolean; maxWidth: number }): Control;
  };
}
