// A bank terminal that is spoken to through its maker's library.
// tnv5 run bank.js 1
const pos = new TBankPOS();
pos.PosType = Arguments[0];
pos.OnError = (sender, code, text) => print('trouble ' + code + ': ' + text);
pos.OnStatus = (sender, code, text) => print('status ' + code + ': ' + text);

if (pos.Init()) {
    const library = pos.IEcrInst; // what the component has no method for
    print('the library is ' + (library === null ? 'not there' : 'there'));
    if (pos.Purchase(1250, 0, 1)) {
        print('paid: ' + pos.RRN);
    }
} else {
    print('no terminal');
}
Quit();
