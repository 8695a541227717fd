// The pixels of a private desktop, out of the file in which its X server keeps them.

import { readFile } from 'node:fs/promises';

export interface Frame {
  width: number;
  height: number;
  /** Red, green, blue and a byte without meaning for each pixel, rows from the top. */
  pixels: Buffer;
}

// The header of an XWD file: words of 32 bits, big-endian.
const headerSize = 0;
const pixmapWidth = 4;
const pixmapHeight = 5;
const byteOrder = 7;
const bitsPerPixel = 11;
const bytesPerLine = 12;
const colourCount = 19;
const headerWords = 25;
const bytesPerColour = 12;

/**
 * What the screen shows now, the pointer included. Throws when the file is gone, since the desktop
 * ended, or holds another kind of pixels than a desktop of depth 24 has.
 */
export async function readScreen(path: string): Promise<Frame> {
  const file = await readFile(path);
  if (file.length < headerWords * 4) {
    throw new Error(`${path} is no picture of a screen`);
  }
  const word = (index: number) => file.readUInt32BE(index * 4);
  const [width, height] = [word(pixmapWidth), word(pixmapHeight)];
  const begin = word(headerSize) + word(colourCount) * bytesPerColour;
  const size = width * height * 4;
  const usable =
    word(bitsPerPixel) === 32 && word(byteOrder) === 0 && word(bytesPerLine) === width * 4;
  if (!usable || size === 0 || begin + size > file.length) {
    throw new Error(`${path} holds pixels that are not shown: the desktop needs depth 24`);
  }
  const pixels = file.subarray(begin, begin + size);
  for (let at = 0; at < size; at += 4) {
    const blue = pixels[at] ?? 0;
    pixels[at] = pixels[at + 2] ?? 0;
    pixels[at + 2] = blue;
  }
  return { width, height, pixels };
}
