/* Frames a second that libmodbus takes off a line and checks: frames of its serial protocol, whose length it
 * knows from the function code and whose CRC-16 it checks, read from a pipe that always has more. Prints one
 * line of JSON. Usage: modbus_frames [seconds] */

#include <errno.h>
#include <fcntl.h>
#include <modbus.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { FRAME = 8, BATCH = 500 };

/* "read 10 registers from 0 of unit 1", with its CRC */
static const unsigned char frame[FRAME] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x0A, 0xC5, 0xCD};

static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static int refill(int line)
{
    unsigned char batch[BATCH * FRAME];
    for (int i = 0; i < BATCH; ++i) {
        memcpy(batch + i * FRAME, frame, FRAME);
    }
    return write(line, batch, sizeof batch) == (ssize_t)sizeof batch;
}

int main(int argc, char **argv)
{
    const double seconds = argc > 1 ? atof(argv[1]) : 2;
    int line[2];
    modbus_t *modbus = modbus_new_rtu("/dev/null", 9600, 'N', 8, 1);
    if (modbus == NULL || pipe(line) != 0) {
        fprintf(stderr, "modbus_frames: %s\n", modbus_strerror(errno));
        return 1;
    }
    modbus_set_slave(modbus, 1);
    modbus_set_socket(modbus, line[0]);
    unsigned char request[MODBUS_RTU_MAX_ADU_LENGTH];
    long frames = 0;
    const double start = now();
    while (now() - start < seconds) {
        if (!refill(line[1])) {
            return 1;
        }
        for (int i = 0; i < BATCH; ++i) {
            if (modbus_receive(modbus, request) != FRAME) {
                fprintf(stderr, "modbus_frames: %s\n", modbus_strerror(errno));
                return 1;
            }
            ++frames;
        }
    }
    printf("{\"framesPerSecond\": %.0f}\n", (double)frames / (now() - start));
    modbus_set_socket(modbus, -1);
    modbus_free(modbus);
    return 0;
}
