// The map: the track, and where the car is and where it heads.

import * as leaflet from "leaflet/leaflet.esm.js";
import type { Map as LeafletMap, Marker, Place, Polyline } from "leaflet/leaflet.esm.js";
import { pause, seek } from "./actions";
import type { Column } from "./api";
import { byId, calmMotion, colour, make, onColours } from "./dom";
import type { Store } from "./store";

const closestZoom = 18;
/** A click farther from the track than this, in pixels, means nothing. */
const reach = 30;
/** Where the track crosses itself, these few pixels do not decide. */
const sameDistance = 3;

export class TrackMap {
  private readonly section = byId("map-section");
  private map: LeafletMap | null = null;
  private track: Polyline | null = null;
  private car: Marker | null = null;
  private readonly arrow = make("div", { class: "car-arrow" });
  private places: (Place | null)[] = [];
  private headings: Column = [];

  constructor(
    private readonly store: Store,
    private readonly tiles: string | null,
  ) {
    store.on(["times"], () => void this.load());
    store.on(["frame"], () => this.moveCar());
    onColours(() => this.track?.setStyle({ color: colour("accent") }));
  }

  private async load(): Promise<void> {
    const { recording } = this.store;
    const { times } = this.store.state;
    this.places = [];
    if (recording && times) {
      const read = await this.read().catch(() => null);
      if (recording !== this.store.recording || !this.store.state.times) return;
      if (read) [this.places, this.headings] = read;
    }
    this.section.hidden = !this.places.some((place) => place);
    if (this.section.hidden) return;
    this.drawTrack();
    this.moveCar();
  }

  private async read(): Promise<[(Place | null)[], Column] | null> {
    const { recording } = this.store;
    if (recording?.info?.container !== "rtv") return null;
    const [lng, lat, headings] = await recording.columnsOf(["lng_deg", "lat_deg", "direction"]);
    return [placesOf(lng, lat), headings];
  }

  private make(): LeafletMap {
    const animate = !calmMotion();
    const map = leaflet.map(byId("map"), {
      keyboard: false,
      attributionControl: this.tiles !== null,
      fadeAnimation: animate,
      zoomAnimation: animate,
      zoomSnap: 0.25,
      maxZoom: 22,
    });
    leaflet.control.scale({ imperial: false, maxWidth: 120 }).addTo(map);
    if (this.tiles !== null) this.addTiles(map, this.tiles);
    map.on("click", ({ containerPoint }) => this.click(map, containerPoint));
    new ResizeObserver(() => map.invalidateSize({ animate: false })).observe(byId("map"));
    return map;
  }

  private addTiles(map: LeafletMap, tiles: string): void {
    leaflet.tileLayer(tiles, { maxZoom: 22 }).addTo(map);
    map.attributionControl.setPrefix("");
    const host = /^https?:\/\/([\w.{}:-]+)\//.exec(tiles)?.[1].replace("{s}.", "");
    if (host) map.attributionControl.addAttribution(`Map: ${host}`);
  }

  private drawTrack(): void {
    this.map ??= this.make();
    this.track?.remove();
    this.track = leaflet.polyline(pieces(this.places), {
      color: colour("accent"),
      weight: 4,
      interactive: false,
      renderer: leaflet.canvas({ padding: 0.5 }),
    });
    // A layer can be added only to a map that shows some place.
    const whole = this.track.getBounds().pad(0.1);
    this.map.invalidateSize({ animate: false });
    this.map.fitBounds(whole, { maxZoom: closestZoom, animate: false });
    this.track.addTo(this.map);
  }

  private moveCar(): void {
    const { map } = this;
    const { frame } = this.store.state;
    const place = this.places[frame] ?? null;
    if (!map || !place) {
      this.car?.remove();
      this.car = null;
      return;
    }
    this.car ??= this.makeCar(place).addTo(map);
    this.car.setLatLng(place);
    const heading = this.headings[frame] ?? null;
    this.arrow.classList.toggle("no-heading", heading === null);
    this.arrow.style.transform = `rotate(${heading ?? 0}deg)`;
    if (!map.getBounds().pad(-0.05).contains(place)) map.panTo(place, { animate: false });
  }

  private makeCar(place: Place): Marker {
    const icon = leaflet.divIcon({ html: this.arrow, className: "car", iconSize: [28, 28] });
    return leaflet.marker(place, { icon, interactive: false, keyboard: false });
  }

  /** Seeks to the frame of the track that is nearest; of several passes the nearest in time. */
  private click(map: LeafletMap, { x, y }: { x: number; y: number }): void {
    const { frame } = this.store.state;
    const distances = this.places.map((place) => {
      if (!place) return Infinity;
      const point = map.latLngToContainerPoint(place);
      return Math.hypot(point.x - x, point.y - y);
    });
    const nearest = distances.reduce((least, distance) => Math.min(least, distance), Infinity);
    if (nearest > reach) return;
    let best = -1;
    distances.forEach((distance, i) => {
      const isNear = distance <= nearest + sameDistance;
      if (isNear && (best < 0 || Math.abs(i - frame) < Math.abs(best - frame))) best = i;
    });
    pause(this.store);
    seek(this.store, best);
  }
}

/** The places of the frames; none where all zeros say that there was no position. */
function placesOf(lng: Column, lat: Column): (Place | null)[] {
  return lng.map((east, i) => {
    const north = lat[i] ?? null;
    if (east === null || north === null || (east === 0 && north === 0)) return null;
    return Math.abs(north) <= 90 && Math.abs(east) <= 180 ? [north, east] : null;
  });
}

/** The track without the frames that have no place. */
function pieces(places: readonly (Place | null)[]): Place[][] {
  const found: Place[][] = [[]];
  for (const place of places) {
    if (place) found[found.length - 1].push(place);
    else if (found[found.length - 1].length) found.push([]);
  }
  return found;
}
