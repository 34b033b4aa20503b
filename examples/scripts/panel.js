// The gates of the club on the screen. Runs in a host that has registered a scroll box under the name "box".
const panel = new TTurnStyler();
panel.ScrollBox = box;
[['Hall', '01A', '02A'], ['Sauna', '03A', '']].forEach(([caption, gateA, gateB], i) => {
    const item = Add(panel.TurnStylerList);
    item.Caption = caption;
    item.GateA = gateA;
    item.GateB = gateB;
    print(i + ': ' + panel.TurnStylerList.Items[i].Caption);
});
panel.OnTurnStylerBtnClick = (sender, index, ip, gate) => print('open ' + gate);
panel.SetUpItems();
