{ fit.pas: fits five control points and prints the bits of a coefficient. }
type TFive = array[0..4] of Double; TCoefs = array[0..7] of Double;

const X: TFive = (0, 100, 100, 0, 40);              Y: TFive = (0, 0, 80, 80, 30);
const Xa: TFive = (12.1, 110.7, 112.4, 9.8, 51.3); Ya: TFive = (7.9, 11.2, 92.6, 86.1, 38.5);

function nuv_CalcCoefs(Count: LongInt; const X, Y, Xa, Ya: TFive; SameOrientation, Kind: LongInt;
  out Used: LongInt; out Coefs: TCoefs): LongInt; cdecl; external 'nuv1math_c';

var Used: LongInt; Coefs: TCoefs;
begin
  if nuv_CalcCoefs(5, X, Y, Xa, Ya, 1, 2, Used, Coefs) <> 0 then
    WriteLn(LowerCase(HexStr(Int64(Coefs[0]), 16)));
end.
