// A gate on a line of classic controllers: every card of the list opens it, any other is refused.
// tnv5 run turnstile.js /dev/ttyUSB0
const members = ['12345678', '87654321'];
const cmOpen = 0; // a new pass; the other modes end one

const gate = new TTurnStylerDevice();
gate.OnError = (sender, text) => print(text);
gate.OnCheckSQL = (sender, device, card, status, img, mode, result) => {
    if (mode !== cmOpen) {
        result.value = 1;
        return;
    }
    result.value = members.includes(card) ? 1 : 0;
    print(device + ': card ' + card + (result.value === 1 ? ' is let in' : ' is refused'));
};
gate.ComPort = OpenPort(Arguments[0], 9600);
