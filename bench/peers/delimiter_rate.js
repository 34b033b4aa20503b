'use strict';

// Lines per second through the delimiter parser of the npm package serialport, each line decided.
//
// usage: delimiter_rate.js CHUNKS SECONDS
//
// CHUNKS holds the reads: each one preceded by its size, 4 bytes, big-endian. They are fed again and again
// from memory; every line becomes a command that a sink counts. Prints one line of JSON.

const fs = require('fs');
const { DelimiterParser } = require('serialport');
const { answer } = require('./decision.js');

const WARM_UP_SECONDS = 0.5;

function load(path) {
  const file = fs.readFileSync(path);
  const chunks = [];
  for (let at = 0; at < file.length; ) {
    const size = file.readUInt32BE(at);
    chunks.push(file.subarray(at + 4, at + 4 + size));
    at += 4 + size;
  }
  return chunks;
}

const chunks = load(process.argv[2]);
const seconds = Number(process.argv[3]);
const cards = new Set();
for (let card = 12340000; card < 12345000; card++) {
  cards.add(String(card));
}

let lines = 0;
let bytesWritten = 0;
const parser = new DelimiterParser({ delimiter: '\r' });
parser.on('data', (bytes) => {
  lines++;
  const command = answer(bytes.toString('latin1'), cards);
  if (command !== undefined) {
    bytesWritten += command.length;
  }
});

// Writes until the parser asks to wait, as a port that reads faster than the program would.
function feed(untilNs, done) {
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

function run(duration, done) {
  const start = process.hrtime.bigint();
  lines = 0;
  feed(start + BigInt(Math.round(duration * 1e9)), () => {
    done(lines / (Number(process.hrtime.bigint() - start) / 1e9));
  });
}

run(WARM_UP_SECONDS, () => {
  run(seconds, (rate) => {
    if (bytesWritten === 0) {
      throw new Error('no line was decided');
    }
    console.log(JSON.stringify({ linesPerSecond: rate }));
  });
});
