// Makes the picture of a window fit for a conversation: small enough, with its scale stated.

import type { Bounds } from '../window/node.js';
import { marksFor, type Mark } from './marks.js';

/** A window's picture as the helper gave it. */
export interface RawPicture {
  mimeType: string;
  base64: string;
  width: number;
  height: number;
  /** What it shows, in screen points. */
  bounds: Bounds;
}

export interface PictureRequest {
  /** "full": not scaled, as far as the size in bytes allows. */
  size: 'fit' | 'full';
  /** Only this part, in screen points. */
  crop?: Bounds | undefined;
  marks?: readonly Mark[] | undefined;
}

export interface Picture {
  mimeType: string;
  base64: string;
  /** "picture 800x600 px, scale 0.5 …" */
  says: string;
}

const mostPixels = 1_150_000;
const longestSide = 1568;
const longestFullSide = 8000;
const mostBytes = 600_000;
const cropMargin = 8;

interface Region {
  left: number;
  top: number;
  width: number;
  height: number;
}

/** The part of the picture in pixels; undefined for the whole, and for what lies outside of it. */
function region(raw: RawPicture, crop: Bounds | undefined): Region | undefined {
  if (crop === undefined || raw.bounds.width <= 0 || raw.bounds.height <= 0) {
    return undefined;
  }
  const scaleX = raw.width / raw.bounds.width;
  const scaleY = raw.height / raw.bounds.height;
  const clamp = (value: number, most: number) => Math.round(Math.min(Math.max(value, 0), most));
  const left = clamp((crop.x - raw.bounds.x) * scaleX - cropMargin, raw.width);
  const top = clamp((crop.y - raw.bounds.y) * scaleY - cropMargin, raw.height);
  const right = clamp((crop.x + crop.width - raw.bounds.x) * scaleX + cropMargin, raw.width);
  const bottom = clamp((crop.y + crop.height - raw.bounds.y) * scaleY + cropMargin, raw.height);
  return right - left < 1 || bottom - top < 1
    ? undefined
    : { left, top, width: right - left, height: bottom - top };
}

function fittingScale(width: number, height: number, size: 'fit' | 'full'): number {
  const side = size === 'full' ? longestFullSide : longestSide;
  const bySide = side / Math.max(width, height);
  const byArea = size === 'full' ? 1 : Math.sqrt(mostPixels / (width * height));
  return Math.min(1, bySide, byArea);
}

function says(area: Region, width: number, height: number, raw: RawPicture, part: boolean): string {
  const points = raw.bounds.width > 0 ? width / (area.width / (raw.width / raw.bounds.width)) : 1;
  const origin = part ? `, part of the window from ${area.left},${area.top}` : '';
  return `picture ${width}x${height} px, scale ${Number(points.toFixed(3))}${origin}`;
}

interface Encoded {
  data: Buffer;
  mimeType: string;
  width: number;
  height: number;
}

/** The smallest loss that stays below the limit: PNG, then JPEG, then fewer pixels. */
async function encoded(raw: RawPicture, area: Region, request: PictureRequest): Promise<Encoded> {
  const { default: sharp } = await import('sharp');
  const input = Buffer.from(raw.base64, 'base64');
  let scale = fittingScale(area.width, area.height, request.size);
  for (;;) {
    const width = Math.max(1, Math.floor(area.width * scale));
    const height = Math.max(1, Math.floor(area.height * scale));
    let image = sharp(input).extract(area).resize(width, height, { fit: 'fill' });
    const perPoint = (raw.width / raw.bounds.width) * (width / area.width);
    if (request.marks !== undefined && Number.isFinite(perPoint) && perPoint > 0) {
      const origin = {
        x: raw.bounds.x + (area.left * raw.bounds.width) / raw.width,
        y: raw.bounds.y + (area.top * raw.bounds.height) / raw.height,
      };
      const overlay = marksFor(request.marks, { width, height, perPoint, origin });
      image = sharp(await image.png().toBuffer()).composite([{ input: Buffer.from(overlay) }]);
    }
    const pixels = await image.removeAlpha().png({ compressionLevel: 6 }).toBuffer();
    if (pixels.length <= mostBytes) {
      return { data: pixels, mimeType: 'image/png', width, height };
    }
    for (const quality of [85, 70, 50]) {
      const data = await sharp(pixels).jpeg({ quality }).toBuffer();
      if (data.length <= mostBytes) {
        return { data, mimeType: 'image/jpeg', width, height };
      }
    }
    scale *= 0.7;
  }
}

/** The picture, at most 600 kB; throws when the helper's is none. */
export async function fitted(raw: RawPicture, request: PictureRequest): Promise<Picture> {
  const part = region(raw, request.crop);
  const area = part ?? { left: 0, top: 0, width: raw.width, height: raw.height };
  const bytes = (raw.base64.length * 3) / 4;
  const asItIs =
    part === undefined &&
    request.marks === undefined &&
    bytes <= mostBytes &&
    fittingScale(raw.width, raw.height, request.size) === 1;
  if (asItIs) {
    const { mimeType, base64, width, height } = raw;
    return { mimeType, base64, says: says(area, width, height, raw, false) };
  }
  const { data, mimeType, width, height } = await encoded(raw, area, request);
  return {
    mimeType,
    base64: data.toString('base64'),
    says: says(area, width, height, raw, part !== undefined),
  };
}
