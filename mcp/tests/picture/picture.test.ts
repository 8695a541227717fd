import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import sharp from 'sharp';

import { marksFor } from '../../src/picture/marks.js';
import { fitted, type RawPicture } from '../../src/picture/picture.js';
import { notes, withSession } from '../support/session.js';

/** A picture of noise is the largest there is. */
async function noise(width: number, height: number): Promise<RawPicture> {
  const png = await sharp({
    create: {
      width,
      height,
      channels: 3,
      background: '#888888',
      noise: { type: 'gaussian', mean: 128, sigma: 60 },
    },
  })
    .png()
    .toBuffer();
  const bounds = { x: 100, y: 50, width: width / 2, height: height / 2 };
  return { mimeType: 'image/png', base64: png.toString('base64'), width, height, bounds };
}

async function plainPicture(width: number, height: number): Promise<RawPicture> {
  const png = await sharp({ create: { width, height, channels: 3, background: '#336699' } })
    .png()
    .toBuffer();
  const bounds = { x: 0, y: 0, width, height };
  return { mimeType: 'image/png', base64: png.toString('base64'), width, height, bounds };
}

async function sizeOf(base64: string) {
  const { width, height } = await sharp(Buffer.from(base64, 'base64')).metadata();
  return { width, height };
}

describe('A picture', () => {
  test('has at most 1.15 megapixels and 600 kB, and states its scale', async () => {
    const picture = await fitted(await noise(2560, 1600), { size: 'fit' });
    const { width, height } = await sizeOf(picture.base64);
    assert.ok(width * height <= 1_150_000, `${width}x${height}`);
    assert.ok(Buffer.from(picture.base64, 'base64').length <= 600_000);
    // Two pixels a point before; half of that and a little more now.
    assert.match(picture.says, new RegExp(`^picture ${width}x${height} px, scale 1\\.0\\d+$`));
  });

  test('that is small enough is sent as it is', async () => {
    const raw = await plainPicture(800, 600);
    const picture = await fitted(raw, { size: 'fit' });
    assert.equal(picture.base64, raw.base64);
    assert.equal(picture.says, 'picture 800x600 px, scale 1');
  });

  test('is not scaled when that is asked for', async () => {
    const picture = await fitted(await plainPicture(2560, 1600), { size: 'full' });
    assert.deepEqual(await sizeOf(picture.base64), { width: 2560, height: 1600 });
  });

  test('can be that of one node', async () => {
    const crop = { x: 200, y: 100, width: 80, height: 24 };
    const picture = await fitted(await plainPicture(800, 600), { size: 'fit', crop });
    assert.deepEqual(await sizeOf(picture.base64), { width: 96, height: 40 });
    assert.match(picture.says, /part of the window from 192,92$/);
  });

  test('that is none is left out, with a note', async () => {
    await withSession(notes([]), {}, async (session) => {
      const look = await session.call('open_target', { app: 'com.example.Notes' });
      assert.equal(look.images.length, 1);
    });
    const raw = { ...(await plainPicture(10, 10)), base64: 'bm8gcGljdHVyZQ==' };
    await assert.rejects(fitted(raw, { size: 'fit', marks: [] }));
  });
});

describe('Marks', () => {
  const canvas = { width: 400, height: 300, perPoint: 1, origin: { x: 0, y: 0 } };
  const boxes = (svg: string) =>
    [
      ...svg.matchAll(
        /<rect x="([\d.-]+)" y="([\d.-]+)" width="([\d.]+)" height="([\d.]+)" fill="([^"]+)"/g,
      ),
    ].map(([, x, y, width, height, fill]) => ({
      x: Number(x),
      y: Number(y),
      right: Number(x) + Number(width),
      bottom: Number(y) + Number(height),
      isLabel: fill !== 'none',
    }));

  test('stand beside what they name, inside the picture, and apart from each other', () => {
    const marks = Array.from({ length: 9 }, (_, index) => ({
      number: index + 95,
      bounds: {
        x: (index % 3) * 120 + 50,
        y: Math.floor(index / 3) * 80 + 30,
        width: 60,
        height: 30,
      },
    }));
    const all = boxes(marksFor(marks, canvas));
    const labels = all.filter((box) => box.isLabel);
    assert.equal(labels.length, 9);
    for (const label of labels) {
      assert.ok(label.x >= 0 && label.y >= 0 && label.right <= 400 && label.bottom <= 300);
      for (const other of all) {
        const apart =
          other === label ||
          label.right <= other.x + 0.1 ||
          other.right <= label.x + 0.1 ||
          label.bottom <= other.y + 0.1 ||
          other.bottom <= label.y + 0.1;
        assert.ok(apart, `${JSON.stringify(label)} covers ${JSON.stringify(other)}`);
      }
    }
  });

  test('are left out where they would cover what they name', () => {
    const whole = { number: 1, bounds: { x: 0, y: 0, width: 400, height: 300 } };
    assert.equal(boxes(marksFor([whole], canvas)).length, 0);
  });
});
