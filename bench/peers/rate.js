'use strict';

// Lines per second through the delimiter parser of the npm package serialport, shared by the peers that
// measure it.

const { DelimiterParser } = require('serialport');

const WARM_UP_SECONDS = 0.5;

// Writes until the parser asks to wait, as a port that reads faster than the program would.
function feed(parser, chunks, untilNs, done) {
  let next = 0;
  const turn = () => {
    let room = true;
    while (room) {
      room = parser.write(chunks[next]);
      next = (next + 1) % chunks.length;
      if (next === 0 && process.hrtime.bigint() >= untilNs) {
        setImmediate(done);
        return;
      }
    }
    parser.once('drain', turn);
  };
  turn();
}

/**
 * Feeds the reads again and again from memory for so many seconds, after a warm-up.
 * @param onLine called with the text of each line
 * @param done called with the lines per second
 */
function measure(chunks, seconds, onLine, done) {
  let lines = 0;
  const parser = new DelimiterParser({ delimiter: '\r' });
  parser.on('data', (bytes) => {
    lines++;
    onLine(bytes.toString('latin1'));
  });
  const run = (duration, after) => {
    const start = process.hrtime.bigint();
    lines = 0;
    feed(parser, chunks, start + BigInt(Math.round(duration * 1e9)), () => {
      after(lines / (Number(process.hrtime.bigint() - start) / 1e9));
    });
  };
  run(WARM_UP_SECONDS, () => run(seconds, done));
}

module.exports = { measure };
