{ fit.pas: fits five control points and prints the bits of a coefficient. }
program Fit;

uses SysUtils;

type
  TOmographicParams = record
    A, B, C, D, E, F, G, H: Double;
  end;

const
  MethodOmographic = 2;
  X: array[0..4] of Double = (0, 100, 100, 0, 40);
  Y: array[0..4] of Double = (0, 0, 80, 80, 30);
  Xa: array[0..4] of Double = (12.1, 110.7, 112.4, 9.8, 51.3);
  Ya: array[0..4] of Double = (7.9, 11.2, 92.6, 86.1, 38.5);

function nuv_CalcCoefs(Points: LongInt; X, Y, Xa, Ya: PDouble; SameOrientation, Requested: LongInt;
  out Used: LongInt; out Coefs: TOmographicParams): LongInt; cdecl; external 'nuv1math_c';

var
  Used: LongInt;
  Coefs: TOmographicParams;
begin
  if nuv_CalcCoefs(5, @X, @Y, @Xa, @Ya, 1, MethodOmographic, Used, Coefs) = 0 then Halt(1);
  WriteLn(LowerCase(HexStr(Int64(Coefs.A), 16)));
end.
