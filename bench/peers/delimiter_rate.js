'use strict';

// Lines per second through the delimiter parser of the npm package serialport, each line decided.
//
// usage: delimiter_rate.js CHUNKS SECONDS
//
// CHUNKS holds the reads: each one preceded by its size, 4 bytes, big-endian. They are fed again and again
// from memory; every line becomes a command that a sink counts. Prints one line of JSON.

const fs = require('fs');
const { answer } = require('./decision.js');
const { measure } = require('./rate.js');

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

let bytesWritten = 0;

function decide(line) {
  const command = answer(line, cards);
  if (command !== undefined) {
    bytesWritten += command.length;
  }
}

measure(chunks, seconds, decide, (rate) => {
  if (bytesWritten === 0) {
    throw new Error('no line was decided');
  }
  console.log(JSON.stringify({ linesPerSecond: rate }));
});
