'use strict';

// Lines per second through the delimiter parser of the npm package serialport, each line a ping of a board
// that is looked up, answered with a checksummed echo and routed: what the line connector does.
//
// usage: board_lines.js BOARDS SECONDS
//
// The reads of 4096 bytes are fed again and again from memory. Prints one line of JSON.

const { measure } = require('./rate.js');

const READ_SIZE = 4096;
const CHARACTERS = '0123456789CDFJKLMQ';

const table = Uint8Array.from({ length: 256 }, (_, value) => {
  let crc = value;
  for (let bit = 0; bit < 8; bit++) {
    crc = crc & 0x80 ? ((crc << 1) ^ 0x31) & 0xff : (crc << 1) & 0xff;
  }
  return crc;
});

function checked(line) {
  let crc = 0xff;
  for (let i = 0; i < line.length; i++) {
    crc = table[crc ^ line.charCodeAt(i)];
  }
  return line + crc.toString(16).toUpperCase().padStart(2, '0');
}

function address(number) {
  let rest = number >> 1;
  let group = '';
  for (let i = 0; i < 3; i++) {
    group = CHARACTERS[rest % CHARACTERS.length] + group;
    rest = Math.floor(rest / CHARACTERS.length);
  }
  return group + 'AB'[number % 2];
}

function reads(boards) {
  let stream = '';
  for (let i = 0; i < boards; i++) {
    stream += checked(`$${address(i)}PING`) + '\r';
  }
  const list = [];
  for (let at = 0; at < stream.length; at += READ_SIZE) {
    list.push(Buffer.from(stream.slice(at, at + READ_SIZE), 'latin1'));
  }
  return list;
}

const chunks = reads(Number(process.argv[2]));
const seconds = Number(process.argv[3]);
const lastHeard = new Map();
let written = 0;

function answer(line) {
  const board = line.slice(1, 5);
  lastHeard.set(board, Date.now());
  if (line.includes('PING')) {
    written += Buffer.from(checked(`$${board}ECHO`), 'latin1').length;
    written += checked(`#0.0.0.0:${board}PING`).length;
  }
}

measure(chunks, seconds, answer, (rate) => {
  if (written === 0) {
    throw new Error('no ping was answered');
  }
  console.log(JSON.stringify({ linesPerSecond: Math.round(rate) }));
});
