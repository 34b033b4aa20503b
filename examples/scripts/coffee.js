// The text of a coffee machine's QR code: machine, place and portion, price and number, under the club's key.
// tnv5 run coffee.js 00112233445566778899AABBCCDDEEFF
try {
    print(_qrcodestr(1, 2, 3, 250, 1, Arguments[0]));
} catch (error) {
    print('trouble: ' + error.message);
}
Quit();
