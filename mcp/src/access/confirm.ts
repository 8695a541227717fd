// Buttons that the user is asked about first, by what their name says that they do.

interface Meaning {
  does: string;
  words: RegExp;
}

// A word counts where it begins a word of the name: "Delete all", not "Undeleted".
const wordStart = '(?<![\\p{L}\\p{N}])';

function words(list: string): RegExp {
  return new RegExp(`${wordStart}(${list.split(' ').join('|')})`, 'iu');
}

// Korean and Chinese write words together, so there they count anywhere.
function anywhere(list: string): RegExp {
  return new RegExp(`(${list.split(' ').join('|')})`, 'u');
}

const meanings: readonly Meaning[] = [
  {
    does: 'deletes',
    words: words(
      'delete remove erase discard trash destroy wipe uninstall empty reset format ' +
        'lösch entfern verwerf supprim effac elimin borrar cancella apagar excluir verwijder удал',
    ),
  },
  { does: 'deletes', words: anywhere('삭제 지우기 제거 휴지통 초기화 删除 刪除 削除') },
  {
    does: 'sends',
    words: words(
      'send submit post publish share reply forward tweet transmit ' +
        'senden absenden veröffentlich teilen envoy publier enviar invia pubblica publicar отправ',
    ),
  },
  { does: 'sends', words: anywhere('보내기 전송 제출 게시 공유 답장 发送 發送 送信 投稿') },
  {
    does: 'pays',
    words: words(
      'pay buy purchase order checkout subscribe donate transfer withdraw ' +
        'bezahl kaufen zahl bestell überweis payer acheter commander pagar comprar paga acquista оплат купить',
    ),
  },
  { does: 'pays', words: anywhere('결제 구매 주문 송금 이체 支付 购买 購入 支払') },
];

/** What a click on something of this name does that cannot be taken back: "deletes"; undefined: nothing known. */
export function consequence(name: string): string | undefined {
  return meanings.find((meaning) => meaning.words.test(name.slice(0, 500)))?.does;
}
