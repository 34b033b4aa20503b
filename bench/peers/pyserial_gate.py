#!/usr/bin/env python3
"""A gate as a pyserial loop.

usage: pyserial_gate.py PORT CARDS

Takes whatever has arrived in one read, cuts lines at the carriage return, looks the card up in a set and
writes the open or the refuse command. Prints "ready" when the port is open.
"""

import sys

import serial


def checksum(command):
    value = command[0] ^ int(command[1:3]) ^ command[3]
    for digit in command[4:7]:
        value ^= digit - ord("0")
    return b"%02X" % value


def decide(port, cards, line):
    if line[:1] != b"$" or line[4:5] != b"R":
        return
    command = line[:4] + (b"103" if line[5:] in cards else b"000")
    port.write(command + checksum(command) + b"\r")


def main():
    path, cards_path = sys.argv[1:3]
    with open(cards_path, "rb") as file:
        cards = set(file.read().split())
    port = serial.Serial(path, 9600)
    print("ready", flush=True)
    rest = b""
    while True:
        try:
            rest += port.read(port.in_waiting or 1)
        except (serial.SerialException, OSError):  # the other end of the line is gone
            return
        *lines, rest = rest.split(b"\r")
        for line in lines:
            decide(port, cards, line)


if __name__ == "__main__":
    main()
